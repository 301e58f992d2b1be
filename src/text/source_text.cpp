#include "text/source_text.h"

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
    const auto begin = lineBegins_[number - 1];
    const std::string_view block(blocks_[begin / blockSize_].get(), blockSize_);
    return cutter_.firstOf(upToNull(block.substr(begin % blockSize_)));
}

std::string_view SourceText::keep(std::string text) {
    return composed_.emplace_front(std::move(text));
}

} // namespace morvane
