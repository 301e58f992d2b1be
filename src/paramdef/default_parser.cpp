#include "paramdef/default_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet numberEnd = "}";

} // namespace

ParamDefResult DefaultParser::parse(Cursor& line) {
    return readTokens<ParamDefResult::incomplete>(line, [&] { return readToken(line); });
}

void DefaultParser::drop() {
    default_.condition.drop();
    default_.value.drop();
}

ParamDefResult DefaultParser::readToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace: {
        const auto result = condition_.parse(line, default_.condition);
        if (result != ParamDefResult::ok)
            return result;
        expect_ = Expect::value;
        return ParamDefResult::incomplete;
    }
    case Expect::value:
        return readValue(line);
    case Expect::stringEnd:
        return readString(line);
    case Expect::expressionEnd: {
        const auto result = tokenizer_.parse(line, default_.value);
        if (result != ParamDefResult::ok)
            return result;
        expect_ = Expect::closeBrace;
        return ParamDefResult::incomplete;
    }
    case Expect::closeBrace:
        if (!line.accept('}'))
            return ParamDefResult::syntaxError;
        expect_ = Expect::openBrace;
        return ParamDefResult::ok;
    }
    return ParamDefResult::internalError;
}

ParamDefResult DefaultParser::readValue(Cursor& line) {
    if (string_.open(line)) {
        expect_ = Expect::stringEnd;
        return readString(line);
    }
    if (line.accept('(')) {
        expect_ = Expect::expressionEnd;
        return ParamDefResult::incomplete;
    }
    Token number;
    const auto result = readBareNumber(line, numberEnd, number);
    if (result != ParamDefResult::ok)
        return result;
    default_.value.tokens.push_back(number);
    expect_ = Expect::closeBrace;
    return ParamDefResult::incomplete;
}

ParamDefResult DefaultParser::readString(Cursor& line) {
    if (string_.parse(line)) {
        default_.value.tokens.push_back(string_.take());
        expect_ = Expect::closeBrace;
    }
    return ParamDefResult::incomplete;
}

} // namespace morvane
