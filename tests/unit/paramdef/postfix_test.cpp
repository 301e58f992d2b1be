#include "paramdef/expression_tokenizer.h"
#include "paramdef/postfix.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

Expression expressionOf(const std::string& text) {
    Expression expression;
    Cursor line({test::kept(std::string(text) + ")"), 1});
    EXPECT_EQ(ExpressionTokenizer().parse(line, expression), ParamDefResult::ok) << text;
    return expression;
}

struct Row {
    const char* why;
    const char* text;
    const char* postfix;
};

constexpr Row rows[] = {
    {"one operand", "a", "a"},
    {"an operator", "a + b", "a b +"},
    {"from left to right", "1 - 2 - 3", "1 2 - 3 -"},
    {"the tighter operator first", "1 + 2 * 3", "1 2 3 * +"},
    {"parentheses", "(1 + 2) * 3", "1 2 + 3 *"},
    {"parentheses in parentheses", "((a)) + ((b + (c)))", "a b c + +"},
    {"$ binds tighter than *", "a * b $ c", "a b c $ *"},
    {"* / % have one precedence", "a * b / c % d", "a b * c / d %"},
    {"+ - have the next lower one", "a - b * c + d", "a b c * - d +"},
    {"<< >> below +", "a << b + c >> d", "a b c + << d >>"},
    {"< > <= >= below <<", "a < b << c > d <= e >= f", "a b c << < d > e <= f >="},
    {"== != below <", "a == b < c != d", "a b c < == d !="},
    {"& below ==", "a & b == c", "a b c == &"},
    {"^ below &", "a ^ b & c", "a b c & ^"},
    {"| below ^", "a | b ^ c", "a b c ^ |"},
    {"&& below |", "a && b | c", "a b c | &&"},
    {"|| below &&", "a || b && c", "a b c && ||"},
    {"every precedence upwards", "a $ b * c + d << e < f == g & h ^ i | j && k || l",
     "a b $ c * d + e << f < g == h & i ^ j | k && l ||"},
    {"every precedence downwards", "a || b && c | d ^ e & f == g < h << i + j * k $ l",
     "a b c d e f g h i j k l $ * + << < == & ^ | && ||"},
    {"an operator after its operands", "1 2 +", "1 2 +"},
    {"an operator before its operands", "+ 1 2", "1 2 +"},
};

TEST(Postfix, OrdersOperandsBeforeOperators) {
    for (const auto& [why, text, postfix] : rows) {
        SCOPED_TRACE(why);
        TokenList output;
        EXPECT_EQ(convertToPostfix(expressionOf(text), output), 0U);
        EXPECT_EQ(test::textOf(output), postfix);
    }
}

struct FailureRow {
    const char* why;
    const char* text;
    std::size_t position; ///< of the token at which it fails, from 1
};

constexpr FailureRow failureRows[] = {
    {"two operands", "1 2", 2},
    {"three operands, one operator", "1 2 + 3", 4},
    {"an operator alone", "+", 1},
    {"an operator without a right operand", "1 +", 2},
    {"an operator without operands, found at the next one", "* + 1", 2},
    {"too few operands, found at the end", "1 + * 2", 4},
    {"one operand, found at the next operator", "1 * + 2", 3},
    {"operands that come too late for an operator", "1 * + 2 3", 3},
    {"nothing in parentheses", "1 + ( )", 4},
    {"nothing but parentheses", "( )", 2},
    {"two operands in parentheses", "(a b)", 4},
    {"a group does not take operands from outside", "1 (+ 2)", 5},
    {"a minus in parentheses", "1 + (-5)", 6},
    {"a minus before a name", "-x", 2},
};

TEST(Postfix, FailsAtAPosition) {
    for (const auto& [why, text, position] : failureRows) {
        SCOPED_TRACE(why);
        TokenList output(1);
        EXPECT_EQ(convertToPostfix(expressionOf(text), output), position);
        EXPECT_EQ(output, TokenList{});
    }
}

Token parenthesis(TokenType type) {
    return {.type = type, .text = {}};
}

TEST(Postfix, FailsForUnbalancedParentheses) {
    const auto open = parenthesis(TokenType::TOKEN_LPAREN);
    const auto close = parenthesis(TokenType::TOKEN_RPAREN);
    const Token number;
    TokenList output;
    EXPECT_EQ(convertToPostfix({{number, close}}, output), 2U);
    EXPECT_EQ(convertToPostfix({{open, number}}, output), 2U);
    EXPECT_EQ(convertToPostfix({{open, open, number, close}}, output), 4U);
}

TEST(Postfix, FailsForNothing) {
    TokenList output(1);
    EXPECT_EQ(convertToPostfix({}, output), 0U) << "its number of tokens";
    EXPECT_EQ(output, TokenList{});
}

} // namespace
} // namespace morvane
