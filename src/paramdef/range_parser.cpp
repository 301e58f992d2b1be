#include "paramdef/range_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet lowEnd = ",.}";
constexpr CharacterSet highEnd = ",}";

} // namespace

ParamDefResult RangeParser::parse(Cursor& line) {
    return readTokens<ParamDefResult::incomplete>(line, [&] { return readToken(line); });
}

void RangeParser::drop() {
    range_.condition.drop();
    range_.items.clear();
}

ParamDefResult RangeParser::readToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace: {
        const auto result = condition_.parse(line, range_.condition);
        if (result != ParamDefResult::ok)
            return result;
        expect_ = Expect::item;
        return ParamDefResult::incomplete;
    }
    case Expect::item:
        return readItem(line);
    case Expect::stringEnd:
        return readString(line);
    case Expect::lowExpressionEnd:
        return readExpression(line, item_.low, Expect::dotsCommaOrClose);
    case Expect::dotsCommaOrClose:
        if (!line.accept(".."))
            return readCommaOrClose(line);
        expect_ = Expect::highBound;
        return ParamDefResult::incomplete;
    case Expect::highBound:
        return readHighBound(line);
    case Expect::highExpressionEnd:
        return readExpression(line, item_.high, Expect::commaOrClose);
    case Expect::commaOrClose:
        return readCommaOrClose(line);
    }
    return ParamDefResult::internalError;
}

ParamDefResult RangeParser::readItem(Cursor& line) {
    if (line.accept('}'))
        return close();
    if (string_.open(line)) {
        expect_ = Expect::stringEnd;
        return readString(line);
    }
    if (line.accept('(')) {
        expect_ = Expect::lowExpressionEnd;
        return ParamDefResult::incomplete;
    }
    return readNumber(line, lowEnd, item_.low, Expect::dotsCommaOrClose);
}

ParamDefResult RangeParser::readString(Cursor& line) {
    if (string_.parse(line)) {
        item_.low.push_back(string_.take());
        expect_ = Expect::commaOrClose;
    }
    return ParamDefResult::incomplete;
}

ParamDefResult RangeParser::readHighBound(Cursor& line) {
    if (line.accept('(')) {
        expect_ = Expect::highExpressionEnd;
        return ParamDefResult::incomplete;
    }
    return readNumber(line, highEnd, item_.high, Expect::commaOrClose);
}

ParamDefResult RangeParser::readExpression(Cursor& line, TokenList& bound, Expect next) {
    const auto result = tokenizer_.parse(line, bound_);
    if (result != ParamDefResult::ok)
        return result;
    bound = bound_.take().tokens;
    expect_ = next;
    return ParamDefResult::incomplete;
}

ParamDefResult RangeParser::readNumber(Cursor& line, const CharacterSet& delimiters,
                                       TokenList& bound, Expect next) {
    Token number;
    const auto result = readBareNumber(line, delimiters, number);
    if (result != ParamDefResult::ok)
        return result;
    bound.push_back(number);
    expect_ = next;
    return ParamDefResult::incomplete;
}

ParamDefResult RangeParser::readCommaOrClose(Cursor& line) {
    const bool closes = line.accept('}');
    if (!closes && !line.accept(','))
        return ParamDefResult::syntaxError;
    range_.items.push_back(std::exchange(item_, {}));
    if (closes)
        return close();
    expect_ = Expect::item;
    return ParamDefResult::incomplete;
}

ParamDefResult RangeParser::close() {
    expect_ = Expect::openBrace;
    return ParamDefResult::ok;
}

} // namespace morvane
