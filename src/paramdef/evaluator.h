// Computes expressions against a table of named values.
#pragma once

#include "paramdef/expression.h"

namespace morvane {

/// Computes a list of tokens in postfix order.
///
/// A name stands for its text in `names`: a number if the whole text is one, else a string. The
/// arithmetic is 32-bit and wraps around.
///
/// @param result  receives the value, of type invalid after a failure; may be null.
/// @return the truth of the value: a number other than 0 or a text that is not empty. False when
///         the list cannot be computed: a name without a value, a missing or a surplus operand, a
///         division by zero.
bool evaluatePostfix(const TokenList& postfix, const NameTable& names, ExprValue* result = nullptr);

/// Converts `expression` to postfix order and computes it.
/// Same results as `evaluatePostfix`; what cannot be converted cannot be computed.
bool evaluate(const Expression& expression, const NameTable& names, ExprValue* result = nullptr);

} // namespace morvane
