#include "paramdef/bare_number.h"

#include "text/cursor.h"
#include "text/number.h"

namespace morvane {

ParamDefResult readBareNumber(Cursor& line, const CharacterSet& delimiters, Token& token) {
    const auto word = line.peekWord(delimiters);
    const auto number = numberPrefix(word);
    if (word.empty())
        return ParamDefResult::syntaxError;
    line.advance(number.length);
    if (number.length != word.size()) {
        line.markToken();
        return ParamDefResult::syntaxError;
    }
    token = {.line = line.line().number,
             .column = line.tokenColumn(),
             .type = TokenType::TOKEN_NUMBER,
             .number = number.value,
             .text = {}};
    return ParamDefResult::ok;
}

} // namespace morvane
