#include "paramdef/expression.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(Expression, TellsOperatorsFromOperands) {
    for (std::int32_t code = -3; code <= 21; ++code) {
        EXPECT_EQ(isOperator(static_cast<TokenType>(code)), code >= 0 && code <= 18) << code;
        EXPECT_EQ(isOperand(static_cast<TokenType>(code)), code >= 19) << code;
    }
}

} // namespace
} // namespace morvane
