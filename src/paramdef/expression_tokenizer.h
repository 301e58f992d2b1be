// Splits the text of an expression into tokens while the definition file is read.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/literal.h"
#include "paramdef/param_def_result.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace morvane {

class Cursor;

/// Reads one expression after another; each may run over several lines. The opening parenthesis of
/// an expression is consumed by the caller, the closing one here.
class ExpressionTokenizer {
public:
    /// Whether a "[" after a name opens an index that becomes part of the name. The parameter
    /// definition file has no such names: there a "[" is a syntax error.
    enum class NameIndices {
        refused,
        accepted
    };

    explicit ExpressionTokenizer(NameIndices nameIndices = NameIndices::refused)
        : nameIndices_(nameIndices) {}

    /// Appends the tokens of the line to `expression` and marks each token in the cursor.
    ///
    /// @return ok when the closing parenthesis and the white space after it were consumed,
    ///         incomplete at the end of the line, syntaxError at a character that begins no token.
    ParamDefResult parse(Cursor& line, Expression& expression);

private:
    enum class Inside {
        expression,
        string,
        index
    };

    ParamDefResult readToken(Cursor& line, Expression& expression);
    void readString(Cursor& line, Expression& expression);
    void readIndex(Cursor& line, Expression& expression);
    ParamDefResult readSymbol(Cursor& line, Expression& expression);
    ParamDefResult addOperator(Cursor& line, TokenType type, Expression& expression);
    static void addWord(const Cursor& line, std::string_view word, Expression& expression);

    NameIndices nameIndices_;
    Inside inside_ = Inside::expression;
    std::uint32_t depth_ = 1; ///< open parentheses, the attribute's own included
    QuotedString string_;
    std::string indexText_;
};

} // namespace morvane
