#include "paramdef/optional_condition.h"

#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

ParamDefResult OptionalCondition::parse(Cursor& line, Expression& condition) {
    return readTokens<ParamDefResult::incomplete>(line, [&] { return readToken(line, condition); });
}

ParamDefResult OptionalCondition::readToken(Cursor& line, Expression& condition) {
    switch (expect_) {
    case Expect::conditionOrBrace:
        if (!line.accept('('))
            return readBrace(line);
        expect_ = Expect::conditionEnd;
        return ParamDefResult::incomplete;
    case Expect::conditionEnd: {
        const auto result = tokenizer_.parse(line, condition);
        if (result != ParamDefResult::ok)
            return result;
        expect_ = Expect::openBrace;
        return ParamDefResult::incomplete;
    }
    case Expect::openBrace:
        return readBrace(line);
    }
    return ParamDefResult::internalError;
}

ParamDefResult OptionalCondition::readBrace(Cursor& line) {
    if (!line.accept('{'))
        return ParamDefResult::syntaxError;
    expect_ = Expect::conditionOrBrace;
    return ParamDefResult::ok;
}

} // namespace morvane
