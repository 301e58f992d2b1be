#include "presetdef/item_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;
using test::clause;
using test::negated;
using test::noneClause;
using test::numberSet;
using test::plain;

struct ItemRow {
    const char* why;
    std::string_view text;
    PresetItem item;
};

const ItemRow itemRows[] = {
    {"a name leaves the comma", "gain @, mode", {1, "gain", {}}},
    {"a name leaves the closing brace", "gain @}", {1, "gain", {}}},
    {"a name right before a comma", "gain@,", {1, "gain", {}}},
    {"a name right before a closing brace", "gain@}", {1, "gain", {}}},
    {"a name of any bytes", "#\xc3\xa4=1 @}", {1, "#\xc3\xa4=1", {}}},
    {"an index clause", "gain { index { a } }@, mode", {1, "gain", {clause(1, {plain("a")})}}},
    {"no blanks", "gain{index{a{1}}}@}", {1, "gain", {clause(1, {plain("a", numberSet({1}))})}}},
    {"several index clauses",
     "gain { index { b } index { none } index { not a } }@ }",
     {1, "gain", {clause(1, {plain("b")}), noneClause(1), clause(1, {negated("a")})}}},
    {"several index clauses without blanks",
     "gain{index{b}index{a}}@}",
     {1, "gain", {clause(1, {plain("b")}), clause(1, {plain("a")})}}},
};

TEST(ItemParser, ReadsANameWithIndexClauses) {
    for (const auto& [why, text, item] : itemRows) {
        SCOPED_TRACE(why);
        test::expectReads<ItemParser>(text, item);
    }
}

TEST(ItemParser, KeepsTheLineOfTheName) {
    ItemParser parser;
    EXPECT_EQ(test::readWith(parser, "\ngain\n{\nindex\n{\na\n}\nindex {\nb }\n}").record,
              (PresetItem{2, "gain", {clause(5, {plain("a")}), clause(8, {plain("b")})}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"an opening brace instead of the name", " @{", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma instead of the name", " @, gain", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a closing brace instead of the name", " @}", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a word after the name", "gain @mode", PARSE_PRESET_SYNTAX},
    {"a sign after the name", "gain @= 1", PARSE_PRESET_SYNTAX},
    {"a number after the name", "gain @1", PARSE_PRESET_SYNTAX},

    {"empty braces", "gain { @}", PARSE_PRESET_SYNTAX},
    {"a comma in the braces", "gain { @, index { a } }", PARSE_PRESET_SYNTAX},
    {"a second opening brace", "gain { @{ a } }", PARSE_PRESET_SYNTAX},
    {"an unknown keyword", "gain { foo@ }", PARSE_PRESET_SYNTAX},
    {"a keyword with more after it", "gain { indexes@ { a } }", PARSE_PRESET_SYNTAX},
    {"a keyword in capitals", "gain { INDEX@{ a } }", PARSE_PRESET_SYNTAX},
    {"a keyword of a list", "gain { all@ }", PARSE_PRESET_SYNTAX},

    {"a clause without brace", "gain { index @a }", PARSE_PRESET_SYNTAX},
    {"a comma instead of the clause", "gain { index @, }", PARSE_PRESET_SYNTAX},
    {"no clause", "gain { index @}", PARSE_PRESET_SYNTAX},
    {"an empty clause", "gain { index { @} }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"\"none\" beside an index", "gain { index { a, none }@ }", PARSE_PRESET_INVALID_INDEX},

    {"a comma between clauses", "gain { index { a } @, index { b } }", PARSE_PRESET_SYNTAX},
    {"a word after a clause", "gain { index { a } foo@ }", PARSE_PRESET_SYNTAX},
    {"a brace after a clause", "gain { index { a } @{ b } }", PARSE_PRESET_SYNTAX},
};

TEST(ItemParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<ItemParser>(text, result);
    }
}

} // namespace
} // namespace morvane
