#include "paramdef/expression.h"
#include "text/cursor.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(Expression, KeepsTheLinesThatGaveItTokens) {
    Expression expression;
    EXPECT_TRUE(expression.empty());
    expression.append({.text = {}}, {"one\n", 1});
    expression.append({.text = {}}, {"three\n", 3});
    expression.append({.text = {}}, {"three\n", 3});
    EXPECT_FALSE(expression.empty());
    EXPECT_EQ(expression.tokens.size(), 3U);
    EXPECT_EQ(expression.lines, (SourceTexts{{1, "one\n"}, {3, "three\n"}}));
}

TEST(Expression, FindsALineByItsNumber) {
    const SourceTexts lines{{1, "one\n"}, {3, "three\n"}, {7, "seven"}};
    EXPECT_EQ(textOfLine(lines, 1), "one\n");
    EXPECT_EQ(textOfLine(lines, 3), "three\n");
    EXPECT_EQ(textOfLine(lines, 7), "seven");
}

TEST(Expression, TellsOperatorsFromOperands) {
    for (std::int32_t code = -3; code <= 21; ++code) {
        EXPECT_EQ(isOperator(static_cast<TokenType>(code)), code >= 0 && code <= 18) << code;
        EXPECT_EQ(isOperand(static_cast<TokenType>(code)), code >= 19) << code;
    }
}

} // namespace
} // namespace morvane
