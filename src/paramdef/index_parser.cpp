#include "paramdef/index_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet nameEnd = ",}";

} // namespace

ParamDefResult IndexParser::parse(Cursor& line) {
    return readTokens<ParamDefResult::incomplete>(line, [&] { return readToken(line); });
}

ParamDefResult IndexParser::readToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        if (!line.accept('{'))
            return ParamDefResult::syntaxError;
        expect_ = Expect::name;
        return ParamDefResult::incomplete;
    case Expect::name:
        return readName(line);
    case Expect::commaOrClose:
        if (line.accept('}')) {
            expect_ = Expect::openBrace;
            return ParamDefResult::ok;
        }
        if (!line.accept(','))
            return ParamDefResult::syntaxError;
        expect_ = Expect::name;
        return ParamDefResult::incomplete;
    }
    return ParamDefResult::internalError;
}

ParamDefResult IndexParser::readName(Cursor& line) {
    const auto name = line.word(nameEnd);
    if (name.empty())
        return ParamDefResult::syntaxError;
    dimension_.names.push_back({name, line.line().number, line.tokenColumn()});
    expect_ = Expect::commaOrClose;
    return ParamDefResult::incomplete;
}

} // namespace morvane
