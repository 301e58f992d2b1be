#include "paramdef/evaluator.h"
#include "paramdef/expression_tokenizer.h"
#include "paramdef/postfix.h"
#include "support/kept_text.h"
#include "text/cursor.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

namespace morvane {
namespace {

using Type = ExprValue::Type;

const NameTable names{
    {"ab", "abc"},          {"x", "0x10"},  {"octal", "010"},        {"empty", ""},
    {"minus", "-3"},        {"junk", "5x"}, {"blank", " 7"},         {"trailing", "7 "},
    {"huge", "9999999999"}, {"zero", "0"},  {"list", "genlock,hdr"},
};

std::string textOf(const ExprValue& value) {
    switch (value.type) {
    case Type::number:
        return std::to_string(value.number);
    case Type::string:
        return '"' + value.text + '"';
    case Type::name:
        return value.text;
    case Type::invalid:
        break;
    }
    return "invalid";
}

Expression expressionOf(std::string_view text) {
    Expression expression;
    Cursor line({test::kept(std::string(text) + ")"), 1});
    EXPECT_EQ(ExpressionTokenizer().parse(line, expression), ParamDefResult::ok) << text;
    return expression;
}

struct Row {
    std::string_view text;
    std::string_view value; ///< 0, "" and invalid are false, everything else is true
};

void expectValues(std::span<const Row> rows) {
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(text);
        ExprValue value;
        const bool truth = evaluate(expressionOf(text), names, &value);
        EXPECT_EQ(textOf(value), expected);
        EXPECT_EQ(truth, expected != "0" && expected != "\"\"" && expected != "invalid");
        EXPECT_EQ(evaluate(expressionOf(text), names), truth) << "without asking for the value";
    }
}

constexpr Row operandRows[] = {
    {"5", "5"},
    {"0", "0"},
    {"-7", "-7"},
    {"\"text\"", "\"text\""},
    {"\"\"", "\"\""},
    {"\"0\"", "\"0\""},
    {"ab", "\"abc\""},
    {"x", "16"},
    {"octal", "8"},
    {"minus", "-3"},
    {"empty", "0"},
    {"junk", "\"5x\""},
    {"blank", "7"},
    {"trailing", "\"7 \""},
    {"huge", "2147483647"},
    {"AB", "invalid"},
    {"unknown", "invalid"},
};

TEST(Evaluator, ResolvesOperands) {
    expectValues(operandRows);
}

constexpr Row arithmeticRows[] = {
    {"1 + 2 * 3", "7"},
    {"1 - 2 - 3", "-4"},
    {"10 / 3", "3"},
    {"-7 / 2", "-3"},
    {"7 / -2", "-3"},
    {"-7 % 3", "-1"},
    {"7 % -3", "1"},
    {"-3 * -4", "12"},
    {"x - 1", "15"},
    {"2147483647 + 1", "-2147483648"},
    {"-2147483647 - 2", "2147483647"},
    {"65536 * 65536", "0"},
    {"2147483647 * 2", "-2"},
    {"(-2147483647 - 1) / -1", "invalid"}, // a minus after "(" is no sign
    {"(0 - 2147483647 - 1) / -1", "-2147483648"},
    {"(0 - 2147483647 - 1) % -1", "0"},
    {"1 / 0", "invalid"},
    {"1 % 0", "invalid"},
    {"1 / zero", "invalid"},
    {"0 / empty", "invalid"},
    {"\"12abc\" - \"0x2\"", "10"},
    {"\"abc\" * 5", "0"},
    {"\"10\" / 3", "3"},
    {"\"9999999999\" - 0", "2147483647"},
    {"junk - 1", "4"},
};

TEST(Evaluator, ComputesWith32Bits) {
    expectValues(arithmeticRows);
}

constexpr Row plusRows[] = {
    {"1 + 2", "3"},          {"\"a\" + \"b\"", "\"ab\""},
    {"\"a\" + 5", "\"a5\""}, {"-5 + \"a\"", "\"-5a\""},
    {"\"1\" + 2", "\"12\""}, {"ab + x", "\"abc16\""},
    {"\"\" + \"\"", "\"\""}, {"1 + unknown", "invalid"},
};

TEST(Evaluator, AddsNumbersAndJoinsTexts) {
    expectValues(plusRows);
}

constexpr Row bitRows[] = {
    {"12 | 10", "14"},  {"12 ^ 10", "6"},         {"12 & 10", "8"},           {"-1 & 255", "255"},
    {"\"6\" | 1", "7"}, {"1 << 4", "16"},         {"1 << 31", "-2147483648"}, {"1 << 32", "0"},
    {"1 << 64", "0"},   {"1 << 65", "0"},         {"1 << 255", "0"},          {"1 << 256", "1"},
    {"1 << 257", "2"},  {"1 << -1", "0"},         {"3 << -255", "6"},         {"-1 << 4", "-16"},
    {"16 >> 4", "1"},   {"-8 >> 1", "-4"},        {"-8 >> 31", "-1"},         {"-8 >> 40", "-1"},
    {"8 >> 40", "0"},   {"8 >> 64", "0"},         {"-8 >> 65", "-1"},         {"8 >> 256", "8"},
    {"-8 >> -1", "-1"}, {"\"16\" >> \"2\"", "4"},
};

TEST(Evaluator, WorksOnBits) {
    expectValues(bitRows);
}

constexpr Row logicRows[] = {
    {"0 || 0", "0"},       {"0 || 5", "1"},       {"5 || 0", "1"},           {"3 && 5", "1"},
    {"3 && 0", "0"},       {"0 && 3", "0"},       {"\"1\" && \"abc\"", "0"}, {"\"7x\" || 0", "1"},
    {"a || 1", "invalid"}, {"1 || a", "invalid"}, {"0 && a", "invalid"},
};

TEST(Evaluator, DecidesWithBothOperands) {
    expectValues(logicRows);
}

constexpr Row comparisonRows[] = {
    {"2 == 2", "1"},          {"2 == 3", "0"},
    {"2 != 3", "1"},          {"2 != 2", "0"},
    {"-1 < 1", "1"},          {"1 < 1", "0"},
    {"2 > 1", "1"},           {"1 > 2", "0"},
    {"2 <= 2", "1"},          {"3 <= 2", "0"},
    {"2 >= 2", "1"},          {"1 >= 2", "0"},
    {"\"10\" == 10", "1"},    {"\"0x10\" == 16", "0"},
    {"x == 16", "1"},         {"x == \"0x10\"", "0"},
    {"\"9\" < 10", "0"},      {"9 < \"10\"", "0"},
    {"\"a\" < \"b\"", "1"},   {"\"B\" < \"a\"", "1"},
    {"\"a\" < \"ab\"", "1"},  {"\"\xff\" > \"a\"", "1"},
    {"\"a\" == \"a \"", "0"}, {"\"\" == 0", "0"},
    {"empty == 0", "1"},      {"empty == \"\"", "0"},
    {"ab >= \"abc\"", "1"},   {"ab != unknown", "invalid"},
};

TEST(Evaluator, ComparesNumbersAsNumbersAndAllElseAsText) {
    expectValues(comparisonRows);
}

constexpr Row containsRows[] = {
    {"ab $ \"b\"", "1"},
    {"ab $ \"d\"", "0"},
    {"ab $ \"\"", "1"},
    {"\"b\" $ ab", "0"},
    {"list $ \"hdr\"", "1"},
    {"123 $ 2", "1"},
    {"x $ 16", "1"},
    {"-5 $ \"-\"", "1"},
    {"list $ \"hdr\" * 5", "5"},
    {"ab $ unknown", "invalid"},
    {"unknown $ \"\"", "invalid"},
};

TEST(Evaluator, SearchesTextInText) {
    expectValues(containsRows);
}

constexpr Row structureRows[] = {
    {"1 2 +", "3"},          {"+ 1 2", "3"},     {"1 2", "invalid"},
    {"1 + (-5)", "invalid"}, {"-x", "invalid"},  {"x ( )", "invalid"},
    {"((x))", "16"},         {"1 +", "invalid"}, {"", "invalid"},
};

TEST(Evaluator, FailsWhereTheStructureIsWrong) {
    expectValues(structureRows);
}

TEST(Evaluator, ChecksTheOperandsOfAPostfixList) {
    const Token number{.type = TokenType::TOKEN_NUMBER, .number = 2, .text = {}};
    const Token plus{.type = TokenType::OP_ADD, .text = {}};
    const Token open{.type = TokenType::TOKEN_LPAREN, .text = {}};
    const TokenList wrong[] = {{},
                               {plus},
                               {number, plus},
                               {plus, number, number},
                               {number, number},
                               {number, number, plus, plus},
                               {open},
                               {number, open}};
    for (const auto& list : wrong) {
        ExprValue value{.type = Type::number, .number = 5, .text = "old"};
        EXPECT_FALSE(evaluatePostfix(list, names, &value));
        EXPECT_EQ(value.type, Type::invalid);
    }
    ExprValue value;
    EXPECT_TRUE(evaluatePostfix({number, number, plus}, names, &value));
    EXPECT_EQ(value, (ExprValue{.type = Type::number, .number = 4, .text = {}}));
}

TEST(Evaluator, TakesAHugeExpression) {
    std::string text = "1";
    for (int i = 0; i < 20000; ++i)
        text += "+1";
    ExprValue value;
    EXPECT_TRUE(evaluate(expressionOf(text), {}, &value));
    EXPECT_EQ(value.number, 20001);
}

} // namespace
} // namespace morvane
