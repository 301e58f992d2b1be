#include "presetdef/from_clause_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;

struct FromRow {
    const char* why;
    std::string_view text;
    FromMapping from;
};

const FromRow fromRows[] = {
    {"an old name alone", "{ gain }@", {1, "gain", {}}},
    {"no blanks, and more on the line", "{gain}@}", {1, "gain", {}}},
    {"an old name of any bytes but braces", "{ a=b,\"\xc3\xa4 }@", {1, "a=b,\"\xc3\xa4", {}}},
    {"a value", "{ gain { 1 = low } }@", {1, "gain", {{"1", "low"}}}},
    {"values without blanks", "{gain{1=low,2=high}}@", {1, "gain", {{"1", "low"}, {"2", "high"}}}},
    {"keys come out in order",
     "{ gain { b = 1 , a = 2 } }@",
     {1, "gain", {{"a", "2"}, {"b", "1"}}}},
    {"of equal keys the first is kept",
     "{ gain { a = 1, b = 2, a = 3, \"a\" = 4 } }@",
     {1, "gain", {{"a", "1"}, {"b", "2"}}, {"a", "a"}}},
    {"a value with an equals sign", "{ gain { a = b=c } }@", {1, "gain", {{"a", "b=c"}}}},
    {"a value that is an equals sign", "{ gain { a == } }@", {1, "gain", {{"a", "="}}}},
    {"a key and a value with an opening brace",
     "{ gain { {a = {b } }@",
     {1, "gain", {{"{a", "{b"}}}},

    {"a quoted value", R"({ gain { unit = "dB" } }@)", {1, "gain", {{"unit", "dB"}}}},
    {"quoted texts keep their blanks",
     R"({ gain { "~old~value~" = "~new~~value~" } }@)",
     {1, "gain", {{" old value ", " new  value "}}}},
    {"quoted texts without blanks around them",
     R"({ gain {"a"="b","c"="d"} }@)",
     {1, "gain", {{"a", "b"}, {"c", "d"}}}},
    {"a quoted value with an equals sign",
     R"({ gain { a = "x=y" } }@)",
     {1, "gain", {{"a", "x=y"}}}},
    {"quoted texts with an opening brace",
     R"({ gain { "{" = "{a" } }@)",
     {1, "gain", {{"{", "{a"}}}},
    {"no escapes", R"({ gain { "a\" = "\" } }@)", {1, "gain", {{"a\\", "\\"}}}},
    {"a quote inside a word is a byte of it",
     R"({ gain { a"b" = c"d } }@)",
     {1, "gain", {{"a\"b\"", "c\"d"}}}},
    {"an open quote ends at the equals sign",
     R"({ gain { "a~= b } }@)",
     {1, "gain", {{"a ", "b"}}}},
    {"an open quote ends at the comma",
     R"({ gain { a = "b~, c = d } }@)",
     {1, "gain", {{"a", "b "}, {"c", "d"}}}},
    {"an open quote ends at the brace", R"({ gain { a = "b~} }@)", {1, "gain", {{"a", "b "}}}},
};

TEST(FromClauseParser, ReadsAnOldNameWithValues) {
    for (const auto& [why, text, from] : fromRows) {
        SCOPED_TRACE(why);
        test::expectReads<FromClauseParser>(text, from);
    }
}

TEST(FromClauseParser, KeepsTheLineOfTheOpeningBrace) {
    FromClauseParser parser;
    EXPECT_EQ(test::readWith(parser, "\n{\ngain\n{\na\n=\nb\n}\n}").record,
              (FromMapping{2, "gain", {{"a", "b"}}}));
}

TEST(FromClauseParser, EndsAnOpenQuoteWithTheLine) {
    FromClauseParser parser;
    for (const std::string_view text : {"{ gain { \"a b", "= \" c d", "} }"}) {
        Cursor line({text, 1});
        const auto isLast = text.starts_with('}');
        EXPECT_EQ(parser.parse(line), isLast ? PARSE_PRESET_OK : PARSE_PRESET_CONTINUE);
    }
    EXPECT_EQ(parser.take(), (FromMapping{1, "gain", {{"a b", " c d"}}}));
}

TEST(FromClauseParser, TakesTheLineFeedIntoAnOpenQuote) {
    FromClauseParser parser;
    EXPECT_EQ(test::readWith(parser, "{ gain { \"a\n= \"b \n} }").record,
              (FromMapping{1, "gain", {{"a\n", "b \n"}}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a name instead of the brace", " @gain }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", " @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", " @, gain }", PARSE_PRESET_SYNTAX},

    {"no old name", "{ @}", PARSE_PRESET_SYNTAX},
    {"values without an old name", "{ @{ a = b } }", PARSE_PRESET_SYNTAX},

    {"a word after the old name", "{ gain @x }", PARSE_PRESET_SYNTAX},
    {"a comma after the old name", "{ gain @, x }", PARSE_PRESET_SYNTAX},
    {"an equals sign after the old name", "{ gain @= x }", PARSE_PRESET_SYNTAX},
    {"a word after the values", "{ gain { a = b } @x }", PARSE_PRESET_SYNTAX},
    {"a comma after the values", "{ gain { a = b } @, }", PARSE_PRESET_SYNTAX},
    {"a second set of values", "{ gain { a = b } @{ c = d } }", PARSE_PRESET_SYNTAX},

    {"no values in the braces", "{ gain { @} }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"no key", "{ gain { @= b } }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a leading comma", "{ gain { @, a = b } }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"an empty quoted key", R"({ gain { ""@ = b } })", PARSE_PRESET_MISSING_IDENTIFIER},
    {"an open quote and nothing after it", R"({ gain { "@= b } })",
     PARSE_PRESET_MISSING_IDENTIFIER},
    {"an open quote before a comma", R"({ gain { "@, a = b } })", PARSE_PRESET_MISSING_IDENTIFIER},
    {"an open quote before a brace", R"({ gain { "@} })", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma before the end", "{ gain { a = b, @} }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"two commas", "{ gain { a = b, @, c = d } }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a word after the key", "{ gain { a @b } }", PARSE_PRESET_SYNTAX},
    {"a key without value", "{ gain { a @} }", PARSE_PRESET_SYNTAX},
    {"a comma after the key", "{ gain { a @, b = c } }", PARSE_PRESET_SYNTAX},
    {"a brace after the key", "{ gain { a @{ b } }", PARSE_PRESET_SYNTAX},
    {"a word right after a quoted key", R"({ gain { "a"@b = c } })", PARSE_PRESET_SYNTAX},
    {"a comma in a quoted key", R"({ gain { "a@,b" = c } })", PARSE_PRESET_SYNTAX},
    {"a closing brace in a quoted key", R"({ gain { "a@}b" = c } })", PARSE_PRESET_SYNTAX},

    {"no value", "{ gain { a = @} }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma instead of the value", "{ gain { a = @, b = c } }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"an empty quoted value", R"({ gain { a = ""@ } })", PARSE_PRESET_MISSING_IDENTIFIER},
    {"an open quote instead of the value", R"({ gain { a = "@} })",
     PARSE_PRESET_MISSING_IDENTIFIER},
    {"an open quote and a comma instead of the value", R"({ gain { a = "@, b = c } })",
     PARSE_PRESET_MISSING_IDENTIFIER},

    {"a word after the value", "{ gain { a = b @c } }", PARSE_PRESET_SYNTAX},
    {"a word right after a quoted value", R"({ gain { a = "b"@c } })", PARSE_PRESET_SYNTAX},
    {"a second equals sign", "{ gain { a = = @b } }", PARSE_PRESET_SYNTAX},
    {"an equals sign after the value", "{ gain { a = b @= c } }", PARSE_PRESET_SYNTAX},
    {"a brace after the value", "{ gain { a = b @{ } }", PARSE_PRESET_SYNTAX},
    {"a comma in a quoted value", R"({ gain { a = "b,c" @} })", PARSE_PRESET_SYNTAX},
};

TEST(FromClauseParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<FromClauseParser>(text, result);
    }
}

} // namespace
} // namespace morvane
