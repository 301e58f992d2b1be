#include "presetdef/preset_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;
using test::clause;
using test::Everything;
using test::excludeList;
using test::includeList;
using test::plain;

struct PresetRow {
    const char* why;
    std::string_view text;
    PresetDefinition preset;
};

const PresetRow presetRows[] = {
    {"an empty block", "scene~preset { }@", {1, "scene", {}, {}}},
    {"an empty block without blanks", "scene~preset{}@{", {1, "scene", {}, {}}},
    {"several blanks in the header", "scene~~~preset { }@ x", {1, "scene", {}, {}}},
    {"a list",
     "scene~preset { include ro { x } }@",
     {1, "scene", {includeList(1, {}, {{1, "x", {}}})}, {}}},
    {"a list right before the closing brace",
     "scene~preset { include ro { x }}@",
     {1, "scene", {includeList(1, {}, {{1, "x", {}}})}, {}}},
    {"lists in any order",
     "scene~preset { exclude rw { a } include ro { b } exclude rw { all } include ro { c } }@",
     {1,
      "scene",
      {includeList(1, {}, {{1, "b", {}}}), includeList(1, {}, {{1, "c", {}}})},
      {excludeList(1, {}, {{1, "a", {}}}), excludeList(1, {}, {}, Everything::yes)}}},
    {"lists without blanks between them",
     "scene~preset{include ro{b}exclude rw{a}}@",
     {1, "scene", {includeList(1, {}, {{1, "b", {}}})}, {excludeList(1, {}, {{1, "a", {}}})}}},
    {"a name of any bytes but an opening brace",
     "a},\"=\xc3\xa4~preset { }@",
     {1, "a},\"=\xc3\xa4", {}, {}}},
    {"a name that begins like the keyword", "presets~preset { }@", {1, "presets", {}, {}}},
    {"a name that is another keyword", "include~preset { }@", {1, "include", {}, {}}},
};

TEST(PresetParser, ReadsListsOfBothKinds) {
    for (const auto& [why, text, preset] : presetRows) {
        SCOPED_TRACE(why);
        test::expectReads<PresetParser>(text, preset);
    }
}

TEST(PresetParser, KeepsTheLineOfTheHeader) {
    PresetParser parser;
    const auto reading =
        test::readWith(parser, "\nscene preset\n{\ninclude ro\n{ x }\nexclude rw { index\n{ a }}}");
    EXPECT_EQ(reading.record, (PresetDefinition{2,
                                                "scene",
                                                {includeList(4, {}, {{5, "x", {}}})},
                                                {excludeList(6, {clause(7, {plain("a")})}, {})}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a preset named like the keyword", "preset~preset@ {", PARSE_PRESET_INVALID_IDENTIFIER},
    {"no keyword", "scene~@{ }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"no keyword and no blank", "scene@{ }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"no keyword at the end of the line", "scene@", PARSE_PRESET_INVALID_IDENTIFIER},
    {"the keyword alone", "preset~@{ }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"no name", "@{ }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"no name before the brace, a keyword after it", "@{~preset", PARSE_PRESET_INVALID_IDENTIFIER},
    {"another keyword", "scene~presets@ { }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"the keyword in capitals", "scene~PRESET@ { }", PARSE_PRESET_INVALID_IDENTIFIER},
    {"two names", "scene~night@~preset { }", PARSE_PRESET_INVALID_IDENTIFIER},

    {"a word instead of the brace", "scene~preset @x {", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", "scene~preset @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", "scene~preset @, {", PARSE_PRESET_SYNTAX},

    {"an unknown list", "scene~preset { @foo ro { x } }", PARSE_PRESET_SYNTAX},
    {"a keyword with more after it", "scene~preset { @includes ro { x } }", PARSE_PRESET_SYNTAX},
    {"a keyword with a comma after it", "scene~preset { @exclude, rw }", PARSE_PRESET_SYNTAX},
    {"a second opening brace", "scene~preset { @{ }", PARSE_PRESET_SYNTAX},
    {"a comma", "scene~preset { @, }", PARSE_PRESET_SYNTAX},
    {"a comma between lists", "scene~preset { include ro { x } @, exclude rw { y } }",
     PARSE_PRESET_SYNTAX},
    {"a byte after the closing brace", "scene~preset { include ro { x } @}x", PARSE_PRESET_SYNTAX},
    {"two closing braces of blocks", "scene~preset { include ro { x }@}} x", PARSE_PRESET_SYNTAX},
    {"a # that begins no comment", "scene~preset { ~@#~x }", PARSE_PRESET_SYNTAX},

    {"a brace right after the keyword of a list", "scene~preset { include{@ ro { x } }",
     PARSE_PRESET_SYNTAX},
    {"an include list of read-write parameters", "scene~preset { include rw@ { x } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"an exclude list of read-only parameters", "scene~preset { exclude ro@ { x } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR},
    {"an empty list", "scene~preset { include ro { @} }", PARSE_PRESET_MISSING_IDENTIFIER},
};

TEST(PresetParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<PresetParser>(text, result);
    }
}

TEST(PresetParser, RequiresTheHeaderOnOneLine) {
    PresetParser parser;
    EXPECT_EQ(test::readWith(parser, "scene \npreset {\n}").result,
              PARSE_PRESET_INVALID_IDENTIFIER);
}

} // namespace
} // namespace morvane
