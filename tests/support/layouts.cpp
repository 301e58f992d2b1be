#include "support/layouts.h"

#include <algorithm>

namespace morvane::test {

namespace {

// Replaces the blanks with the white space characters in turn.
std::string withAllWhiteSpace(std::string text) {
    constexpr std::string_view whiteSpace = "\t\v\f\r\n ";
    std::size_t next = 0;
    for (auto& c : text) {
        if (c == ' ')
            c = whiteSpace[next++ % whiteSpace.size()];
    }
    return text;
}

} // namespace

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const auto length = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

std::string withoutMark(std::string_view row) {
    std::string text(row);
    std::erase(text, '@');
    return text;
}

std::vector<std::string> layoutsOf(std::string_view row) {
    std::vector<std::string> layouts{std::string(row)};
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (row[i] == ' ')
            layouts.push_back(std::string(row).replace(i, 1, "\n"));
    }
    layouts.emplace_back(row);
    std::replace(layouts.back().begin(), layouts.back().end(), ' ', '\n');
    layouts.push_back(withAllWhiteSpace(std::string(row)));
    for (auto& layout : layouts)
        std::replace(layout.begin(), layout.end(), '~', ' ');
    return layouts;
}

} // namespace morvane::test
