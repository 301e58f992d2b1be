#include "paramdef/expression_tokenizer.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {
namespace {

using enum ParamDefResult;
using NameIndices = ExpressionTokenizer::NameIndices;

struct Outcome {
    test::AttributeReading reading;
    Expression expression;
};

Outcome tokenize(std::string_view text, NameIndices nameIndices = NameIndices::refused) {
    Outcome outcome;
    ExpressionTokenizer tokenizer(nameIndices);
    outcome.reading = test::readAttribute(
        text, [&](Cursor& line) { return tokenizer.parse(line, outcome.expression); });
    return outcome;
}

struct Row {
    const char* why;
    std::string_view text; ///< after the opening parenthesis; "@" where reading stops
    std::string_view tokens;
};

// Reads each row in every layout.
void expectTokens(std::span<const Row> rows, NameIndices nameIndices = NameIndices::refused) {
    for (const auto& [why, text, tokens] : rows) {
        for (const auto& layout : test::layoutsOf(text)) {
            SCOPED_TRACE(std::string(why) + ": " + layout);
            const auto outcome = tokenize(test::withoutMark(layout), nameIndices);
            EXPECT_EQ(outcome.reading.result, ok);
            EXPECT_EQ(outcome.reading.stop, layout);
            EXPECT_EQ(test::textOf(outcome.expression.tokens), tokens);
        }
    }
}

constexpr Row tokenRows[] = {
    {"nothing", " )@", ""},
    {"numbers in three bases", "10 0x1F 0X1f 017 )@", "10 31 31 15"},
    {"a digit that the base does not have makes a name", "08 0x 0xg )@", "08 0x 0xg"},
    {"a number with something after it is a name", "5x )@", "5x"},
    {"numbers beyond 32 bits", "2147483647 2147483648 4294967296 99999999999999999999 )@",
     "2147483647 2147483647 2147483647 2147483647"},
    {"names", "mode _a a.b a:b {x} a#b \xc3\xa4 )@", "mode _a a.b a:b {x} a#b \xc3\xa4"},
    {"names and numbers beside operators", "a+5*b )@", "a + 5 * b"},
    {"every operator", "a||b&&c|d^e&f==g!=h<i>j<=k>=l<<m>>n+o-p*q/r%s$t )@",
     "a || b && c | d ^ e & f == g != h < i > j <= k >= l << m >> n + o - p * q / r % s $ t"},
    {"the longest operator first", "a|||b &&&c <<<d >>>e )@", "a || | b && & c << < d >> > e"},
    {"parentheses inside", "( a + ( b ) ) * c )@", "( a + ( b ) ) * c"},
    {"empty parentheses inside", "( ) )@", "( )"},
    {"a string", "\"auto\" )@", "\"auto\""},
    {"a string with characters that end a word", "\"~a(b)[c]#d~\" )@", "\" a(b)[c]#d \""},
    {"an empty string", "\"\" )@", "\"\""},
    {"strings side by side", "\"a\"\"b\" )@", "\"a\" \"b\""},
    {"a quote inside a word", "a\"b\" )@", "a\"b\""},
    {"a string after an operator", "a$\"b\" )@", "a $ \"b\""},
};

TEST(ExpressionTokenizer, ReadsTokensOverLines) {
    expectTokens(tokenRows);
}

TEST(ExpressionTokenizer, ConsumesTheWhiteSpaceBehindTheExpression) {
    EXPECT_EQ(tokenize("a) \t{ x }").reading.stop, "a) \t@{ x }");
}

TEST(ExpressionTokenizer, GivesTokensTheirCodes) {
    const auto tokens =
        tokenize("||&&| ^&==!=< > <=>=<<>>+ - * / % $ 1 \"s\" n ( ) )").expression.tokens;
    std::vector<std::int32_t> codes;
    for (const auto& token : tokens)
        codes.push_back(static_cast<std::int32_t>(token.type));
    EXPECT_EQ(codes, (std::vector<std::int32_t>{0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,
                                                12, 13, 14, 15, 16, 17, 18, 19, 20, 21, -3, -2}));
}

constexpr Row minusRows[] = {
    {"at the beginning", "-5 )@", "-5"},
    {"with a blank", "- 5 )@", "-5"},
    {"between two numbers", "7 - 5 )@", "7 - 5"},
    {"after a number in parentheses", "( 7 ) -5 )@", "( 7 ) - 5"},
    {"after every kind of operator", "1 * -5 || -6 $ -7 - -8 )@", "1 * -5 || -6 $ -7 - -8"},
    {"after a parenthesis", "( -5 ) )@", "( - 5 )"},
    {"before a name", "-x + -y )@", "- x + - y"},
    {"before a string", "-\"5\" )@", "- \"5\""},
    {"twice", "- -5 )@", "- -5"},
    {"three times", "- - -5 )@", "- - -5"},
    {"a folded number is not looked at again", "-5 -6 )@", "-5 - 6"},
    {"alone", "- )@", "-"},
    {"at the end", "1 + - )@", "1 + -"},
    {"the smallest number", "-2147483648 -0x80000000 )@", "-2147483647 - 2147483647"},
};

TEST(ExpressionTokenizer, FoldsAMinusWhereOnlyASignCanStand) {
    expectTokens(minusRows);
}

struct PlaceRow {
    const char* why;
    std::string_view text;
    std::string_view tokens;
};

constexpr PlaceRow placeRows[] = {
    {"in one line", "  mode == \"a\")", "mode@1:2 ==@1:7 \"a\"@1:10"},
    {"over lines", "mode\n\n  ==\n 2\n)", "mode@1:0 ==@3:2 2@4:1"},
    {"a folded minus stands where it began", "a +\n -\n 5)", "a@1:0 +@1:2 -5@2:1"},
    {"a string loses its line feed and the indent of the next line", "\"one \n  two\n\" )",
     "\"one two\"@1:0"},
    {"a string that ends in the last byte of the file", "\"ab", ""},
};

TEST(ExpressionTokenizer, StampsTokensWithTheirPlace) {
    for (const auto& [why, text, tokens] : placeRows) {
        SCOPED_TRACE(why);
        const auto outcome = tokenize(text);
        EXPECT_EQ(test::textOf(outcome.expression.tokens, test::Places::shown), tokens);
    }
}

struct MistakeRow {
    const char* why;
    std::string_view text; ///< "@" where the caret goes
    NameIndices nameIndices = NameIndices::refused;
};

constexpr MistakeRow mistakeRows[] = {
    {"a lone exclamation mark", "a @!b )"},
    {"a lone equals sign", "a @= b )"},
    {"an equals sign after a shift", "a<<@=b )"},
    {"a bracket", "a @[ 1 ] )"},
    {"a bracket after a name", "a@[1] )"},
    {"a closing bracket", "a @] )"},
    {"a bracket first", "@[1] )", NameIndices::accepted},
    {"a bracket after a number", "5@[1] )", NameIndices::accepted},
    {"a bracket after a string", "\"a\"@[1] )", NameIndices::accepted},
    {"a bracket after an operator", "a +@[1] )", NameIndices::accepted},
    {"a closing bracket without an opening one", "a@] )", NameIndices::accepted},
};

TEST(ExpressionTokenizer, RefusesWhatBeginsNoToken) {
    for (const auto& [why, text, nameIndices] : mistakeRows) {
        for (const auto& layout : test::layoutsOf(text)) {
            SCOPED_TRACE(std::string(why) + ": " + layout);
            const auto outcome = tokenize(test::withoutMark(layout), nameIndices);
            EXPECT_EQ(outcome.reading.result, syntaxError);
            EXPECT_EQ(outcome.reading.stop, layout);
        }
    }
}

constexpr Row indexRows[] = {
    {"an index", "gain[1] )@", "gain[1]"},
    {"two indices", "gain[1][low] + 2 )@", "gain[1][low] + 2"},
    {"white space around the text", "gain[ a~b ] )@", "gain[a b]"},
    {"characters that end a word elsewhere", "gain[(+\")] )@", "gain[(+\")]"},
    {"an empty index", "gain[ ] )@", "gain[]"},
};

TEST(ExpressionTokenizer, ReadsIndicesOfNamesWhereTheyAreAccepted) {
    expectTokens(indexRows, NameIndices::accepted);
}

constexpr std::string_view unfinished[] = {"", "\n", "a", "( a )", "\"a", "\"a\n", "a + \n"};

TEST(ExpressionTokenizer, WaitsForTheEndOfTheExpression) {
    for (const auto text : unfinished) {
        SCOPED_TRACE(text);
        const auto reading = tokenize(text).reading;
        EXPECT_EQ(reading.result, incomplete);
        EXPECT_EQ(reading.stop, text.empty() ? "@" : std::string(text) + "@");
    }
}

TEST(ExpressionTokenizer, ReadsOneExpressionAfterTheOther) {
    constexpr std::string_view expressions[] = {"( ( a ) )", "\"b\"", "", "c"};
    ExpressionTokenizer tokenizer;
    for (const auto text : expressions) {
        Expression expression;
        const auto closed = std::string(text) + ")";
        Cursor line({closed, 1});
        EXPECT_EQ(tokenizer.parse(line, expression), ok) << text;
        EXPECT_EQ(test::textOf(expression.tokens), text);
    }
}

} // namespace
} // namespace morvane
