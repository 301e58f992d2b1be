#include "presetdef/mapping_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;

struct MappingRow {
    const char* why;
    std::string_view text;
    TranslateMapping mapping;
};

const MappingRow mappingRows[] = {
    {"an old name", "level { from { gain } }@", {1, "level", {}, {{1, "gain", {}}}}},
    {"an index mapping",
     "level { index 1 { input = idx::0 } }@",
     {1, "level", {{1, 1, {{"input", "idx::0"}}}}, {}}},
    {"no blanks where none are needed, and more on the line",
     "level{from{gain}index 1{a=b}}@ }",
     {1, "level", {{1, 1, {{"a", "b"}}}}, {{1, "gain", {}}}}},
    {"clauses in any order",
     "level { index 2 { b = c } from { x { 1 = 2 } } index 1 { a = b } from { y } from { x } }@",
     {1,
      "level",
      {{1, 2, {{"b", "c"}}}, {1, 1, {{"a", "b"}}}},
      {{1, "x", {{"1", "2"}}}, {1, "y", {}}, {1, "x", {}}}}},
    {"a name of any bytes but an opening brace",
     "a},=\xc3\xa4 { from { x } }@",
     {1, "a},=\xc3\xa4", {}, {{1, "x", {}}}}},
    {"a name that is a keyword", "from { from { from } }@", {1, "from", {}, {{1, "from", {}}}}},
};

TEST(MappingParser, ReadsFromClausesAndIndexMappings) {
    for (const auto& [why, text, mapping] : mappingRows) {
        SCOPED_TRACE(why);
        test::expectReads<MappingParser>(text, mapping);
    }
}

TEST(MappingParser, KeepsTheLineOfTheNewName) {
    MappingParser parser;
    EXPECT_EQ(test::readWith(parser, "\nlevel\n{\nfrom {\nx } index 1 {\na = b }\n}").record,
              (TranslateMapping{2, "level", {{5, 1, {{"a", "b"}}}}, {{4, "x", {}}}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"no new name", " @{ from { x } }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a word instead of the brace", "level @from { x } }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", "level @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", "level @, { from { x } }", PARSE_PRESET_SYNTAX},

    {"nothing in the braces", "level { }@ }", PARSE_PRESET_EMPTY_DEFINITION},
    {"nothing in the braces and no blanks", "level{}@{", PARSE_PRESET_EMPTY_DEFINITION},
    {"an unknown keyword", "level { to@ { x } }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a keyword of the section", "level { removed@ { x } }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a keyword in capitals", "level { FROM@{ x } }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a keyword with more after it", "level { index1@ { a = b } }",
     PARSE_PRESET_INVALID_IDENTIFIER},
    {"a second opening brace", "level { @{ x } }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a comma", "level { from { x } ,@ from { y } }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"a byte after the closing brace", "level { from { x } }x@ }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"two closing braces", "level { from { x } }}@ x", PARSE_PRESET_INVALID_IDENTIFIER},

    {"an index mapping without count", "level { index @x { a = b } }",
     PARSE_PRESET_INVALID_INTEGER},
    {"an index mapping without text", "level { index 1 { a = @} }",
     PARSE_PRESET_MISSING_IDENTIFIER},
    {"a from clause without brace", "level { from @x }", PARSE_PRESET_SYNTAX},
    {"a from clause without name", "level { from { @} }", PARSE_PRESET_SYNTAX},
};

TEST(MappingParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<MappingParser>(text, result);
    }
}

} // namespace
} // namespace morvane
