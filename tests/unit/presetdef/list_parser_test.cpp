#include "presetdef/list_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;
using test::clause;
using test::Everything;
using test::excludeList;
using test::includeList;
using test::negated;
using test::noneClause;
using test::numberSet;
using test::plain;

struct ListRow {
    const char* why;
    std::string_view text;
    PresetList list;
};

const ListRow listRows[] = {
    {"all read-only ones", "include ro { all }@", includeList(1, {}, {}, Everything::yes)},
    {"all read-write ones", "exclude rw { all }@", excludeList(1, {}, {}, Everything::yes)},
    {"one parameter", "include ro { x }@", includeList(1, {}, {{1, "x", {}}})},
    {"no blanks where none are needed", "include ro{x}@}", includeList(1, {}, {{1, "x", {}}})},
    {"several parameters in file order", "exclude rw { y , x , y }@ {",
     excludeList(1, {}, {{1, "y", {}}, {1, "x", {}}, {1, "y", {}}})},
    {"a clause of the list's own", "exclude rw { index { a } }@",
     excludeList(1, {clause(1, {plain("a")})}, {})},
    {"clauses and parameters in any order",
     "exclude rw { index { a }, x, index { none }, y { index { b {1} } index { c } }, z }@",
     excludeList(1, {clause(1, {plain("a")}), noneClause(1)},
                 {{1, "x", {}},
                  {1, "y", {clause(1, {plain("b", numberSet({1}))}), clause(1, {plain("c")})}},
                  {1, "z", {}}})},
    {"\"all\" after others keeps them", "include ro { index { not a }, x, all }@",
     includeList(1, {clause(1, {negated("a")})}, {{1, "x", {}}}, Everything::yes)},
    {"\"all\" right before the brace", "include ro { all}@",
     includeList(1, {}, {}, Everything::yes)},
    {"names that begin like keywords", "include ro { allx, indexes, none, not }@",
     includeList(1, {}, {{1, "allx", {}}, {1, "indexes", {}}, {1, "none", {}}, {1, "not", {}}})},
    {"a name that begins like a comment", "include ro { x, ~#y }@",
     includeList(1, {}, {{1, "x", {}}, {1, "#y", {}}})},
};

TEST(ListParser, ReadsItemsAndClauses) {
    for (const auto& [why, text, list] : listRows) {
        SCOPED_TRACE(why);
        test::expectReads<ListParser>(text, list);
    }
}

TEST(ListParser, KeepsTheLineOfTheFirstWord) {
    ListParser parser;
    EXPECT_EQ(test::readWith(parser, "\nexclude\nrw\n{\nindex\n{\na\n}\n,\nx\n,\nall\n}").record,
              excludeList(2, {clause(6, {plain("a")})}, {{10, "x", {}}}, Everything::yes));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"an unknown word", "foo@ ro { x }", PARSE_PRESET_SYNTAX},
    {"a keyword with more after it", "includes@ ro { x }", PARSE_PRESET_SYNTAX},
    {"only white space ends the keyword: brace", "include{@ ro { x }", PARSE_PRESET_SYNTAX},
    {"only white space ends the keyword: comma", "exclude,@ rw { x }", PARSE_PRESET_SYNTAX},
    {"the keyword runs into what follows", "include{ro{x}@ }", PARSE_PRESET_SYNTAX},
    {"an opening brace", "{@ x }", PARSE_PRESET_SYNTAX},
    {"a closing brace", "}@ x", PARSE_PRESET_SYNTAX},

    {"read-write in an include list", "include rw@ { x }", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"read-only in an exclude list", "exclude ro@ { x }", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"read-write in an include list, brace after it", "include rw@{ x }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"another access type", "include rostrict@ { x }", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"an unknown access type", "exclude rwx@ { x }", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"an access type in capitals", "include RO@ { x }", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"no access type", "include @{ x }", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"a comma instead of the access type", "exclude @, x", PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"a closing brace instead of the access type", "exclude @}", PARSE_PRESET_INC_EXC_ACCESS_ERR},

    {"a word instead of the brace", "include ro @x }", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", "include ro@, x }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", "exclude rw @}", PARSE_PRESET_SYNTAX},

    {"an empty list", "include ro { @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a leading comma", "include ro { @, x }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a second opening brace", "include ro { @{ x }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma before the end", "exclude rw { x, @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"two commas", "exclude rw { x, @, y }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a brace after a comma", "exclude rw { x, @{ y }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a clause without brace", "exclude rw { index @x }", PARSE_PRESET_SYNTAX},
    {"a comma instead of a clause", "exclude rw { index @, x }", PARSE_PRESET_SYNTAX},
    {"no clause", "exclude rw { index @}", PARSE_PRESET_SYNTAX},
    {"an empty clause", "exclude rw { index { @} }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"\"none\" beside an index", "exclude rw { index { a, none }@ }", PARSE_PRESET_INVALID_INDEX},

    {"a word after a parameter", "include ro { x @y }", PARSE_PRESET_SYNTAX},
    {"a mistake in a parameter", "include ro { x { foo@ } }", PARSE_PRESET_SYNTAX},

    {"a word after a parameter with clause", "include ro { x { index {a} } @y }",
     PARSE_PRESET_SYNTAX},
    {"a brace after a parameter with clause", "include ro { x { index {a} } @{ y }",
     PARSE_PRESET_SYNTAX},
    {"a word after a clause", "include ro { index { a } @x }", PARSE_PRESET_SYNTAX},
    {"a brace after a clause", "include ro { index { a } @{ b }", PARSE_PRESET_SYNTAX},
    {"a comma after \"all\"", "include ro { all @, x }", PARSE_PRESET_SYNTAX},
    {"a comma right after \"all\"", "exclude rw { x, all@, y }", PARSE_PRESET_SYNTAX},
    {"a word after \"all\"", "include ro { all @x }", PARSE_PRESET_SYNTAX},
    {"a brace after \"all\"", "include ro { all @{ x }", PARSE_PRESET_SYNTAX},
};

TEST(ListParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<ListParser>(text, result);
    }
}

} // namespace
} // namespace morvane
