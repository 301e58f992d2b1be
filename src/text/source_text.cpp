#include "text/source_text.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <span>
#include <utility>

namespace morvane {

std::optional<std::string_view> SourceText::readLine(std::FILE* stream) {
    const auto line = cutter_.next(stream, [this] {
        blocks_.push_back(std::make_unique_for_overwrite<Block>(blockSize_));
        return std::span(blocks_.back().get(), blockSize_);
    });
    if (!line)
        return std::nullopt;
    const auto begin = static_cast<std::size_t>(line->data() - blocks_.back().get());
    lineBegins_.push_back(static_cast<std::uint32_t>((blocks_.size() - 1) * blockSize_ + begin));
    return upToNull(*line);
}

std::optional<std::string_view> SourceText::line(std::uint32_t number) const {
    if (number == 0 || number > lineBegins_.size())
        return std::nullopt;
    return cutter_.firstOf(upToNull(fromLine(number).substr(0, longestLine)));
}

// The rest of the block, which may not be full if the line is the last one.
std::string_view SourceText::fromLine(std::uint32_t number) const {
    const auto begin = lineBegins_[number - 1];
    const std::string_view block(blocks_[begin / blockSize_].get(), blockSize_);
    return block.substr(begin % blockSize_);
}

std::optional<SourceText::Place> SourceText::placeOf(std::string_view text) const {
    const std::less_equal<> notBehind; // of pointers into different blocks, too
    const auto block =
        std::find_if(blocks_.begin(), blocks_.end(), [&](const std::unique_ptr<Block>& candidate) {
            return notBehind(candidate.get(), text.data()) &&
                   notBehind(text.data() + text.size(), candidate.get() + blockSize_);
        });
    if (block == blocks_.end())
        return std::nullopt;
    const auto offset =
        static_cast<std::uint32_t>(static_cast<std::size_t>(block - blocks_.begin()) * blockSize_ +
                                   static_cast<std::size_t>(text.data() - block->get()));
    const auto next = std::upper_bound(lineBegins_.begin(), lineBegins_.end(), offset);
    return Place{static_cast<std::uint32_t>(next - lineBegins_.begin()), offset - *std::prev(next)};
}

bool SourceText::isContinued(std::uint32_t number) const {
    return number < lineBegins_.size() && !cutter_.firstOf(fromLine(number)).ends_with('\n');
}

std::string_view SourceText::keep(std::string text) {
    return composed_.emplace_front(std::move(text));
}

} // namespace morvane
