#include "paramdef/expression.h"

#include "text/cursor.h"

#include <utility>

namespace morvane {

void keepLine(SourceTexts& texts, const SourceLine& line) {
    texts.try_emplace(line.number, line.text);
}

void Expression::append(Token token, const SourceLine& line) {
    tokens.push_back(std::move(token));
    keepLine(lines, line);
}

} // namespace morvane
