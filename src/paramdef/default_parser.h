// The part of a `default` attribute after its keyword.
#pragma once

#include "paramdef/expression_tokenizer.h"
#include "paramdef/literal.h"
#include "paramdef/optional_condition.h"
#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"

#include <utility>

namespace morvane {

class Cursor;

/// Reads `(condition) { value }`, over as many lines as it takes.
class DefaultParser {
public:
    /// @return ok when the closing brace was consumed.
    ParamDefResult parse(Cursor& line);

    /// Hands over the default that was read and starts again with an empty one.
    DefaultSpec take() { return std::exchange(default_, {}); }

    /// Forgets it instead.
    void drop();

private:
    enum class Expect {
        openBrace,
        value,
        stringEnd,
        expressionEnd,
        closeBrace
    };

    ParamDefResult readToken(Cursor& line);
    ParamDefResult readValue(Cursor& line);
    ParamDefResult readString(Cursor& line);

    Expect expect_ = Expect::openBrace;
    OptionalCondition condition_;
    ExpressionTokenizer tokenizer_;
    QuotedString string_;
    DefaultSpec default_;
};

} // namespace morvane
