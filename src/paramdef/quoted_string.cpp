#include "paramdef/quoted_string.h"

#include "text/cursor.h"

#include <string_view>

namespace morvane {

bool QuotedString::open(Cursor& line) {
    const auto column = line.column();
    if (!line.accept('"'))
        return false;
    token_ = {
        .line = line.line().number, .column = column, .type = TokenType::TOKEN_STRING, .text = {}};
    return true;
}

bool QuotedString::parse(Cursor& line) {
    const auto rest = line.rest();
    const auto quote = rest.find('"');
    if (quote == std::string_view::npos) {
        token_.text += rest.substr(0, rest.empty() ? 0 : rest.size() - 1);
        line.advance(rest.size());
        return false;
    }
    token_.text += rest.substr(0, quote);
    line.advance(quote + 1);
    return true;
}

} // namespace morvane
