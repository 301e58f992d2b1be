#include "paramdef/literal.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

struct NumberRow {
    const char* text; ///< "@" after the number, or at the caret of a mistake
    CharacterSet delimiters;
    ParamDefResult result;
    const char* number;
};

constexpr auto ok = ParamDefResult::ok;
constexpr auto syntax = ParamDefResult::syntaxError;

constexpr NumberRow numberRows[] = {
    {"5@ }", "", ok, "5"},
    {"-0x1f@}", ",}", ok, "-31"},
    {"010@,", ",}", ok, "8"},
    {"5@..7", ".", ok, "5"},
    {"99999999999@", "", ok, "2147483647"},
    {"5@..7", ",}", syntax, ""},
    {"5@x", "", syntax, ""},
    {"0@9", "", syntax, ""},
    {"@x", "", syntax, ""},
    {"@-", "", syntax, ""},
    {"@}", "}", syntax, ""},
    {"@", "}", syntax, ""},
};

TEST(BareNumber, TakesAWholeWord) {
    for (const auto& [text, delimiters, result, number] : numberRows) {
        SCOPED_TRACE(text);
        const auto source = test::withoutMark(text);
        Token token;
        Cursor line({source, 3});
        EXPECT_EQ(readBareNumber(line, delimiters, token), result);
        const auto stop = result == ok ? line.column() : line.tokenColumn();
        EXPECT_EQ(std::string(source).insert(stop, "@"), text);
        if (result != ok)
            continue;
        EXPECT_EQ(test::textOf({token}, test::Places::shown), std::string(number) + "@3:0");
    }
}

struct StringRow {
    const char* why;
    const char* text; ///< after the opening quote, a line or more
    const char* string;
    const char* rest; ///< what is not consumed of the last line; null for an open string
};

constexpr StringRow stringRows[] = {
    {"a string", "auto\" }", "auto", " }"},
    {"an empty string", "\"\"", "", "\""},
    {"blanks and a backslash", " a\\\" b\"", " a\\", " b\""},
    {"a string over lines loses the line feeds", "a\n b\n\"x", "a b", "x"},
    {"an open string loses its last byte, whatever it is", "ab", "a", nullptr},
    {"an open string of nothing", "", "", nullptr},
};

TEST(QuotedString, EndsAtTheNextQuote) {
    for (const auto& [why, text, string, rest] : stringRows) {
        SCOPED_TRACE(why);
        const auto quoted = '"' + std::string(text);
        QuotedString reader;
        bool closed = false;
        for (const auto line : test::linesOf(quoted)) {
            Cursor cursor({line, 1, &test::keptTexts()});
            if (line.data() == quoted.data())
                reader.open(cursor);
            closed = reader.parse(cursor);
            EXPECT_EQ(cursor.rest(), closed && rest != nullptr ? rest : "");
            if (closed)
                break;
        }
        EXPECT_EQ(closed, rest != nullptr);
        EXPECT_EQ(reader.take().text, string);
    }
}

TEST(QuotedString, OpensAtAQuoteOnly) {
    QuotedString reader;
    Cursor line({"a\"b\"", 4});
    EXPECT_FALSE(reader.open(line));
    EXPECT_EQ(line.column(), 0U);
    line.advance(1);
    line.markToken();
    EXPECT_TRUE(reader.open(line));
    EXPECT_TRUE(reader.parse(line));
    EXPECT_EQ(reader.take(),
              (Token{.line = 4, .column = 1, .type = TokenType::TOKEN_STRING, .text = "b"}));
}

} // namespace
} // namespace morvane
