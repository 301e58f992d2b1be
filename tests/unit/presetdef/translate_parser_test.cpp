#include "presetdef/translate_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

#include <string_view>

namespace morvane {
namespace {

using enum PresetParseResult;

// A mapping that only names an old parameter.
TranslateMapping renamed(std::uint32_t line, std::string_view newName, std::string_view oldName) {
    return {line, newName, {}, {{line, oldName, {}}}};
}

struct SectionRow {
    const char* why;
    std::string_view text;
    TranslateSection section;
};

const SectionRow sectionRows[] = {
    {"a removed list", "{ removed { old } }@", {1, {{1, {"old"}}}, {}}},
    {"no blanks, and more on the line", "{removed{old}}@{", {1, {{1, {"old"}}}, {}}},
    {"a mapping", "{ level { from { gain } } }@", {1, {}, {renamed(1, "level", "gain")}}},
    {"both in any order",
     "{ b { from { x } } removed { o, p } a { index 1 { i = j } } removed { o } }@ x",
     {1,
      {{1, {"o", "p"}}, {1, {"o"}}},
      {renamed(1, "b", "x"), {1, "a", {{1, 1, {{"i", "j"}}}}, {}}}}},
    {"names that are keywords elsewhere",
     "{ from { from { x } } index { from { y } } preset { from { z } } }@",
     {1, {}, {renamed(1, "from", "x"), renamed(1, "index", "y"), renamed(1, "preset", "z")}}},
    {"a name that begins like the keyword",
     "{ removed1 { from { x } } }@",
     {1, {}, {renamed(1, "removed1", "x")}}},
    {"a closing brace with more after it is a name",
     "{ }x { from { y } } }@",
     {1, {}, {renamed(1, "}x", "y")}}},
};

TEST(TranslateParser, ReadsRemovedListsAndMappings) {
    for (const auto& [why, text, section] : sectionRows) {
        SCOPED_TRACE(why);
        test::expectReads<TranslateParser>(text, section);
    }
}

TEST(TranslateParser, KeepsTheLineOfTheOpeningBrace) {
    TranslateParser parser;
    EXPECT_EQ(
        test::readWith(parser, "\n{\nremoved\n{ old }\nlevel {\nfrom { x }\n}\n}").record,
        (TranslateSection{2, {{4, {"old"}}}, {TranslateMapping{5, "level", {}, {{6, "x", {}}}}}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a word instead of the brace", " @removed { old } }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", " @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", " @, {", PARSE_PRESET_SYNTAX},

    {"nothing in the braces", "{ }@ x", PARSE_PRESET_EMPTY_DEFINITION},
    {"nothing in the braces and no blanks", "{}@{", PARSE_PRESET_EMPTY_DEFINITION},
    {"a second opening brace", "{ @{ }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a stray brace after a list", "{ removed { old } @{", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a stray brace after a mapping", "{ level { from { x } } @{", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma is read as a name", "{ removed { old } , @}", PARSE_PRESET_SYNTAX},
    {"two closing braces are read as a name", "{ removed { old } }} @x", PARSE_PRESET_SYNTAX},

    {"an empty list", "{ removed { @} }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a list without brace", "{ removed @old }", PARSE_PRESET_SYNTAX},

    {"an empty mapping", "{ level { }@ }", PARSE_PRESET_EMPTY_DEFINITION},
    {"a mapping without brace", "{ level @from { x } }", PARSE_PRESET_SYNTAX},
    {"a mapping with an unknown keyword", "{ level { to@ { x } } }",
     PARSE_PRESET_INVALID_IDENTIFIER},
};

TEST(TranslateParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<TranslateParser>(text, result);
    }
}

} // namespace
} // namespace morvane
