#include "text/source_text.h"

#include <utility>

namespace morvane {

namespace {

// The first line of `text`, or as much of it as is there.
std::string_view firstLine(std::string_view text) {
    const auto longest = text.substr(0, SourceText::longestLine);
    const auto lineFeed = longest.find('\n');
    return lineFeed == std::string_view::npos ? longest : longest.substr(0, lineFeed + 1);
}

bool isWhole(std::string_view line) {
    return line.size() == SourceText::longestLine || line.ends_with('\n');
}

std::string_view upToNull(std::string_view line) {
    return line.substr(0, line.find('\0'));
}

} // namespace

std::optional<std::string_view> SourceText::readLine(std::FILE* stream) {
    auto line = firstLine(unread_);
    if (!isWhole(line)) {
        readBlock(stream);
        line = firstLine(unread_);
        if (line.empty() || (!isWhole(line) && std::ferror(stream) != 0))
            return std::nullopt;
    }
    const auto& block = blocks_.back();
    lineBegins_.push_back(
        static_cast<std::uint32_t>((blocks_.size() - 1) * blockSize_ +
                                   static_cast<std::size_t>(line.data() - block.bytes.get())));
    unread_.remove_prefix(line.size());
    return upToNull(line);
}

// A line that the last block has only in part begins the new one.
void SourceText::readBlock(std::FILE* stream) {
    if (std::feof(stream) != 0 || std::ferror(stream) != 0)
        return;
    Block block{std::make_unique_for_overwrite<char[]>(blockSize_), unread_.size()};
    unread_.copy(block.bytes.get(), unread_.size());
    block.size += std::fread(&block.bytes[block.size], 1, blockSize_ - block.size, stream);
    unread_ = {block.bytes.get(), block.size};
    blocks_.push_back(std::move(block));
}

std::optional<std::string_view> SourceText::line(std::uint32_t number) const {
    if (number == 0 || number > lineBegins_.size())
        return std::nullopt;
    const auto begin = lineBegins_[number - 1];
    const auto& block = blocks_[begin / blockSize_];
    const std::string_view text(block.bytes.get(), block.size);
    return upToNull(firstLine(text.substr(begin % blockSize_)));
}

std::string_view SourceText::keep(std::string text) {
    return composed_.emplace_front(std::move(text));
}

} // namespace morvane
