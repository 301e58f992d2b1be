#include "paramdef/literal.h"

#include "text/cursor.h"
#include "text/number.h"

#include <string_view>

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

bool QuotedString::open(Cursor& line) {
    const auto column = line.column();
    if (!line.accept('"'))
        return false;
    begun_.clear();
    token_ = {
        .line = line.line().number, .column = column, .type = TokenType::TOKEN_STRING, .text = {}};
    return true;
}

bool QuotedString::parse(Cursor& line) {
    const auto rest = line.rest();
    const auto quote = rest.find('"');
    if (quote == std::string_view::npos) {
        begun_ += rest.substr(0, rest.empty() ? 0 : rest.size() - 1);
        token_.text = begun_;
        line.advance(rest.size());
        return false;
    }
    token_.text = rest.substr(0, quote);
    line.advance(quote + 1);
    if (!begun_.empty())
        token_.text = line.keep(std::exchange(begun_, {}).append(token_.text));
    return true;
}

} // namespace morvane
