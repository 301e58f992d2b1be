#include "presetdef/index_clause_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;
using test::clause;
using test::nameSet;
using test::negated;
using test::noneClause;
using test::numberSet;
using test::plain;
using test::rangeSet;

struct ClauseRow {
    const char* why;
    std::string_view text;
    IndexSpec clause;
};

const ClauseRow clauseRows[] = {
    {"no index at all", "{ none }@", noneClause(1)},
    {"an index", "{ a }@", clause(1, {plain("a")})},
    {"no blanks, and more on the line", "{a}@{", clause(1, {plain("a")})},
    {"an index that must be absent", "{ not a }@", clause(1, {negated("a")})},
    {"several in file order", "{ b, a }@", clause(1, {plain("b"), plain("a")})},
    {"the same twice", "{ a, not a, a }@", clause(1, {plain("a"), negated("a"), plain("a")})},
    {"values", "{ a { 1 } }@", clause(1, {plain("a", numberSet({1}))})},
    {"values without blanks", "{a{1}}@", clause(1, {plain("a", numberSet({1}))})},
    {"values to leave out", "{ not a { 1..2 } }@", clause(1, {negated("a", rangeSet({{1, 2}}))})},
    {"values belong to their own selector", "{ a { 1 }, b, not c { x } }@",
     clause(1, {plain("a", numberSet({1})), plain("b"), negated("c", nameSet({"x"}))})},
    {"\"not\" belongs to its own selector", "{ not a, b }@", clause(1, {negated("a"), plain("b")})},
    {"of two value sets the last counts", "{ a { 1, x } { 2..3 } }@",
     clause(1, {{"a", false, rangeSet({{2, 3}}), true}})},
    {"\"none\" twice", "{ none, none }@", noneClause(1)},
    {"\"none\" with values", "{ none { 1 } }@", noneClause(1)},
    {"\"not none\"", "{ not none }@", noneClause(1)},
    {"an index named \"not\"", "{ not not }@", clause(1, {negated("not")})},
    {"names that begin like keywords", "{ nota, none1 }@",
     clause(1, {plain("nota"), plain("none1")})},
    {"keywords of other constructs", "{ index, all }@", clause(1, {plain("index"), plain("all")})},
    {"a name of any bytes", "{ 1=\xc3\xa4 }@", clause(1, {plain("1=\xc3\xa4")})},
};

TEST(IndexClauseParser, ReadsSelectors) {
    for (const auto& [why, text, expected] : clauseRows) {
        SCOPED_TRACE(why);
        test::expectReads<IndexClauseParser>(text, expected);
    }
}

TEST(IndexClauseParser, KeepsThePlaceOfTheOpeningBrace) {
    constexpr std::string_view text = "  { a }";
    Cursor line({text, 1});
    IndexClauseParser parser;
    EXPECT_EQ(parser.parse(line), PARSE_PRESET_OK);
    EXPECT_EQ(parser.take().place.data(), text.data() + 2);
}

// "none" leaves no selector, whose "not" could stay for the next clause.
TEST(IndexClauseParser, ForgetsANotThatHasNoSelector) {
    IndexClauseParser parser;
    EXPECT_EQ(test::readWith(parser, "{ not none }").record, noneClause(1));
    EXPECT_EQ(test::readWith(parser, "{ a }").record, clause(1, {plain("a")}));
}

TEST(IndexClauseParser, KeepsTheLineOfTheOpeningBrace) {
    IndexClauseParser parser;
    EXPECT_EQ(test::readWith(parser, "\n\n{\na\n{\n1\n}\n}").record,
              clause(3, {plain("a", numberSet({1}))}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a name instead of the brace", " @a }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", " @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", " @, a }", PARSE_PRESET_SYNTAX},

    {"an empty clause", "{ @}", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a leading comma", "{ @, a }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"values without a name", "{ @{1} }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a comma before the end", "{ a, @}", PARSE_PRESET_INVALID_IDENTIFIER},
    {"two commas", "{ a, @, b }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"values without a name after a comma", "{ none, @{1} }", PARSE_PRESET_INVALID_IDENTIFIER},

    {"\"not\" and the end", "{ not @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"\"not\" and a comma", "{ not @, a }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"\"not\" and values", "{ not @{1} }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"an empty value set", "{ a { @} }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a mistake in a value set", "{ a { 1 @2 } }", PARSE_PRESET_SYNTAX},
    {"a descending range", "{ not a { 5..2@ } }", PARSE_PRESET_INVALID_RANGE},

    {"a name after a name", "{ a @b }", PARSE_PRESET_SYNTAX},
    {"a name after a negated name", "{ not a @b }", PARSE_PRESET_SYNTAX},
    {"a name after \"none\"", "{ none @a }", PARSE_PRESET_SYNTAX},
    {"a name after values", "{ a {1} @b }", PARSE_PRESET_SYNTAX},
    {"a sign after values", "{ a {1} @= }", PARSE_PRESET_SYNTAX},

    {"\"none\" after an index", "{ a, none }@ }", PARSE_PRESET_INVALID_INDEX},
    {"\"none\" before an index", "{ none, a }@ }", PARSE_PRESET_INVALID_INDEX},
    {"\"none\" between indices", "{ a, none, b }@", PARSE_PRESET_INVALID_INDEX},
    {"\"none\" with values beside an index", "{ none {1}, a }@", PARSE_PRESET_INVALID_INDEX},
    {"\"not none\" beside an index", "{ not none, not a }@", PARSE_PRESET_INVALID_INDEX},
};

TEST(IndexClauseParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<IndexClauseParser>(text, result);
    }
}

} // namespace
} // namespace morvane
