#include "tables/text_list.h"

#include <algorithm>
#include <functional>
#include <new>

namespace morvane {

void TextList::append(std::string_view text) {
    if (text.size() >= maximumBytes - block_.size())
        throw std::bad_alloc();
    block_.append(text).push_back('\0');
    starts_.push_back(static_cast<std::uint32_t>(block_.size()));
}

void TextList::appendSorted(std::vector<std::string> texts) {
    // Mostly they are in order, as those of a preset are that a client sends.
    if (std::adjacent_find(texts.begin(), texts.end(), std::greater_equal<>{}) != texts.end()) {
        std::sort(texts.begin(), texts.end());
        texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
    }
    for (const auto& text : texts)
        append(text);
}

std::size_t TextList::lowerBound(std::string_view text) const {
    return firstNotLess(0, size(), [&](std::size_t place) { return (*this)[place].view() < text; });
}

} // namespace morvane
