#include "paramdef/expression.h"

#include "text/cursor.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace morvane {

void keepLine(SourceTexts& texts, const SourceLine& line) {
    if (texts.empty() || texts.back().number != line.number)
        texts.push_back({line.number, std::string(line.text)});
}

std::string_view textOfLine(const SourceTexts& texts, std::uint32_t number) {
    const auto found = std::lower_bound(
        texts.begin(), texts.end(), number,
        [](const SourceText& line, std::uint32_t wanted) { return line.number < wanted; });
    assert(found != texts.end() && found->number == number);
    return found->text;
}

void Expression::append(Token token, const SourceLine& line) {
    tokens.push_back(std::move(token));
    keepLine(lines, line);
}

} // namespace morvane
