// Converts an expression from infix order, as it is written, to postfix order.
#pragma once

#include "paramdef/expression.h"

#include <cstddef>

namespace morvane {

/// Converts `expression` to postfix order, operators by precedence and from left to right.
/// Parentheses disappear.
///
/// Counts operands but does not require the operators to be between them: "1 2 +" passes.
///
/// @param postfix replaced by the result; empty after a failure.
/// @return 0 on success; otherwise the position, counted from 1, of the token at which conversion
///         failed, which is the number of tokens when the failure shows only at the end.
std::size_t convertToPostfix(const Expression& expression, TokenList& postfix);

} // namespace morvane
