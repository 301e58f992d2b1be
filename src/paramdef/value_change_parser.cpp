#include "paramdef/value_change_parser.h"

#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

ParamDefResult ValueChangeParser::parse(Cursor& line) {
    return readTokens<ParamDefResult::incomplete>(line, [&] { return readToken(line); });
}

ParamDefResult ValueChangeParser::readToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        if (!line.accept('{'))
            return ParamDefResult::syntaxError;
        expect_ = Expect::from;
        return ParamDefResult::incomplete;
    case Expect::from:
        return readSide(line, Expect::fromStringEnd, Expect::arrow);
    case Expect::fromStringEnd:
        return readString(line, Expect::arrow);
    case Expect::arrow:
        if (!line.accept("->"))
            return ParamDefResult::syntaxError;
        expect_ = Expect::to;
        return ParamDefResult::incomplete;
    case Expect::to:
        return readSide(line, Expect::toStringEnd, Expect::closeBrace);
    case Expect::toStringEnd:
        return readString(line, Expect::closeBrace);
    case Expect::closeBrace:
        if (!line.accept('}'))
            return ParamDefResult::syntaxError;
        expect_ = Expect::openBrace;
        return ParamDefResult::ok;
    }
    return ParamDefResult::internalError;
}

// The "-" of the arrow ends a number, so a negative one must be quoted.
ParamDefResult ValueChangeParser::readSide(Cursor& line, Expect stringEnd, Expect next) {
    static constexpr CharacterSet delimiters = "-}";
    if (string_.open(line)) {
        expect_ = stringEnd;
        return readString(line, next);
    }
    const auto text = line.peekWord(delimiters);
    Token side;
    const auto result = readBareNumber(line, delimiters, side);
    if (result != ParamDefResult::ok)
        return result;
    side.text = text;
    finishSide(side, next);
    return ParamDefResult::incomplete;
}

ParamDefResult ValueChangeParser::readString(Cursor& line, Expect next) {
    if (string_.parse(line))
        finishSide(string_.take(), next);
    return ParamDefResult::incomplete;
}

void ValueChangeParser::finishSide(const Token& side, Expect next) {
    if (next == Expect::arrow) {
        change_.fromLine = side.line;
        change_.fromColumn = side.column;
        change_.from = side.text;
    } else {
        change_.toLine = side.line;
        change_.toColumn = side.column;
        change_.to = side.text;
    }
    expect_ = next;
}

} // namespace morvane
