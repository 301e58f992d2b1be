// The part of a `rangeValid` or `rangeDoc` attribute after its keyword.
#pragma once

#include "paramdef/expression_tokenizer.h"
#include "paramdef/literal.h"
#include "paramdef/optional_condition.h"
#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"

#include <utility>

namespace morvane {

class CharacterSet;
class Cursor;

/// Reads `(condition) { item, low..high }`, over as many lines as it takes.
class RangeParser {
public:
    /// @return ok when the closing brace was consumed.
    ParamDefResult parse(Cursor& line);

    /// Hands over the range that was read and starts again with an empty one.
    RangeSpec take() { return std::exchange(range_, {}); }

    /// Forgets it instead.
    void drop();

private:
    enum class Expect {
        openBrace, // or a condition before it
        item,      // or the end: a range may be empty, and a comma may stand before the brace
        stringEnd,
        lowExpressionEnd,
        dotsCommaOrClose,
        highBound,
        highExpressionEnd,
        commaOrClose,
    };

    ParamDefResult readToken(Cursor& line);
    ParamDefResult readItem(Cursor& line);
    ParamDefResult readString(Cursor& line);
    ParamDefResult readHighBound(Cursor& line);
    ParamDefResult readExpression(Cursor& line, TokenList& bound, Expect next);
    ParamDefResult readNumber(Cursor& line, const CharacterSet& delimiters, TokenList& bound,
                              Expect next);
    ParamDefResult readCommaOrClose(Cursor& line);
    ParamDefResult close();

    Expect expect_ = Expect::openBrace;
    OptionalCondition condition_;
    ExpressionTokenizer tokenizer_;
    QuotedString string_;
    Expression bound_; ///< the tokens of the open parenthesised bound
    RangeItem item_;
    RangeSpec range_;
};

} // namespace morvane
