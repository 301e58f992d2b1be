// The beginning of a `rangeValid`, `rangeDoc` or `default` attribute: a condition in parentheses,
// which may be missing, and the opening brace.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/expression_tokenizer.h"
#include "paramdef/param_def_result.h"

namespace morvane {

class Cursor;

class OptionalCondition {
public:
    /// Appends the condition's tokens, if there is one, to `condition`.
    /// @return ok when the opening brace was consumed.
    ParamDefResult parse(Cursor& line, Expression& condition);

private:
    enum class Expect {
        conditionOrBrace,
        conditionEnd,
        openBrace
    };

    ParamDefResult readToken(Cursor& line, Expression& condition);
    ParamDefResult readBrace(Cursor& line);

    Expect expect_ = Expect::conditionOrBrace;
    ExpressionTokenizer tokenizer_;
};

} // namespace morvane
