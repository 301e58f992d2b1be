#include "presetdef/preset_def_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

#include <algorithm>

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
using test::rangeSet;
using test::withoutLines;

constexpr std::uint32_t untouched = 4711;

/// What a parser made of a file.
struct FileReading {
    PresetParseResult result = PARSE_PRESET_OK;
    std::string stop; ///< the text with a "@" where the error column of the last line points
    PresetDefinitions definitions;
};

FileReading readFile(std::string_view text) {
    FileReading reading;
    PresetDefParser parser;
    std::size_t consumed = 0;
    std::uint32_t number = 0;
    for (const auto line : test::linesOf(test::kept(text))) {
        auto column = untouched;
        reading.result = parser.parsePresetDefLine(reading.definitions, column, line, ++number);
        if (reading.result != PARSE_PRESET_OK && reading.result != PARSE_PRESET_CONTINUE) {
            reading.stop = std::string(text).insert(consumed + column, "@");
            break;
        }
        EXPECT_EQ(column, untouched) << line;
        consumed += line.size();
    }
    return reading;
}

PresetDefinition emptyPreset(std::uint32_t line, const char* name) {
    return {line, name, {}, {}};
}

TranslateSection removedSection(std::uint32_t line, const char* name) {
    return {line, {{line, {name}}}, {}};
}

struct FileRow {
    const char* why;
    std::string_view text;
    PresetDefinitions definitions; ///< of the text in one line
};

const FileRow fileRows[] = {
    {"nothing", " ", {}},
    {"a preset", "scene~preset { }", {{}, {emptyPreset(1, "scene")}}},
    {"a preset and a list on one line without blanks before the closing braces",
     "scene~preset { include ro { x }}",
     {{}, {{1, "scene", {includeList(1, {}, {{1, "x", {}}})}, {}}}}},
    {"a translate section", "translate { removed { x } }", {{removedSection(1, "x")}, {}}},
    {"a translate section with a brace after its keyword",
     "translate{ removed { x } }",
     {{removedSection(1, "x")}, {}}},
    {"blocks of both kinds, each in file order",
     "b~preset { } translate { removed { y } } a~preset { } translate { removed { x } }",
     {{removedSection(1, "y"), removedSection(1, "x")},
      {emptyPreset(1, "b"), emptyPreset(1, "a")}}},
    {"two presets of one name",
     "a~preset { } a~preset { include ro { all } }",
     {{}, {emptyPreset(1, "a"), {1, "a", {includeList(1, {}, {}, Everything::yes)}, {}}}}},
    {"a preset with a name that begins like the keyword",
     "translates~preset { }",
     {{}, {emptyPreset(1, "translates")}}},
    {"a preset with a name in capitals",
     "TRANSLATE~preset { }",
     {{}, {emptyPreset(1, "TRANSLATE")}}},
    {"no comment after other text",
     "scene~preset { include ro { ~#x, ~y#z } }",
     {{}, {{1, "scene", {includeList(1, {}, {{1, "#x", {}}, {1, "y#z", {}}})}, {}}}}},
};

TEST(PresetDefParser, ReadsBlocksOfBothKinds) {
    for (const auto& [why, text, definitions] : fileRows) {
        SCOPED_TRACE(why);
        const auto layouts = test::layoutsOf(text);
        EXPECT_EQ(readFile(layouts.front()).definitions, definitions);
        if (text.find('#') != std::string_view::npos)
            continue; // with which no line may begin
        for (const auto& layout : layouts) {
            const auto reading = readFile(layout);
            EXPECT_EQ(reading.result, PARSE_PRESET_OK) << layout;
            EXPECT_EQ(withoutLines(reading.definitions), withoutLines(definitions)) << layout;
        }
    }
}

// Blanks between all tokens, every kind of record, every kind of value.
constexpr std::string_view everything =
    R"(translate { removed { oldgain , oldmode } removed { old } level { from { gain { unit = "dB" , )"
    R"("old~value" = 2 } } index 1 { input = idx::0 , output = main } } mode { from { m } } } )"
    R"(scene~preset { include ro { index { none } , status , all } exclude rw { index { not input , )"
    R"(output { 0 , 2 .. 3 , main } } , gain { index { not input { 1 } } index { output { 7 .. 9 } } } , )"
    R"(mode } include ro { version } } night~preset { } )";

const PresetDefinitions everythingRecords{
    {{1,
      {{1, {"oldgain", "oldmode"}}, {1, {"old"}}},
      {{1,
        "level",
        {{1, 1, {{"input", "idx::0"}, {"output", "main"}}}},
        {{1, "gain", {{"unit", "dB"}, {"old value", "2"}}}}},
       {1, "mode", {}, {{1, "m", {}}}}}}},
    {{1,
      "scene",
      {includeList(1, {noneClause(1)}, {{1, "status", {}}}, Everything::yes),
       includeList(1, {}, {{1, "version", {}}})},
      {excludeList(
          1,
          {clause(1, {negated("input"),
                      plain("output", {IndexValueSet::Kind::name, {"main"}, {0}, {{2, 3}}})})},
          {{1,
            "gain",
            {clause(1, {negated("input", numberSet({1}))}),
             clause(1, {plain("output", rangeSet({{7, 9}}))})}},
           {1, "mode", {}}})}},
     {1, "night", {}, {}}}};

TEST(PresetDefParser, TakesALineBreakAtEveryTokenBoundary) {
    for (const auto& layout : test::layoutsOf(everything)) {
        const auto reading = readFile(layout);
        EXPECT_EQ(reading.result, PARSE_PRESET_OK) << layout;
        EXPECT_EQ(withoutLines(reading.definitions), withoutLines(everythingRecords)) << layout;
    }
    EXPECT_EQ(readFile(test::layoutsOf(everything).front()).definitions, everythingRecords);
}

TEST(PresetDefParser, TakesACommentAndABlankLineAtEveryTokenBoundary) {
    for (std::size_t i = 0; i < everything.size(); ++i) {
        if (everything[i] != ' ')
            continue;
        auto text = std::string(everything).replace(i, 1, "\n \t# } { , = \"\n\n \f\n#\n");
        std::replace(text.begin(), text.end(), '~', ' ');
        const auto reading = readFile(text);
        EXPECT_EQ(reading.result, PARSE_PRESET_OK) << text;
        EXPECT_EQ(withoutLines(reading.definitions), withoutLines(everythingRecords)) << text;
    }
}

TEST(PresetDefParser, NumbersEveryRecordByTheLineOnWhichItBegins) {
    constexpr std::string_view text = "# a comment counts\n"
                                      "\n"
                                      "translate\n"
                                      "{\n"
                                      "removed\n"
                                      "{\n"
                                      "old\n"
                                      "}\n"
                                      "level\n"
                                      "{\n"
                                      "from\n"
                                      "{\n"
                                      "gain\n"
                                      "}\n"
                                      "index 1\n"
                                      "{\n"
                                      "input = x\n"
                                      "}\n"
                                      "}\n"
                                      "} scene preset\n"
                                      "{\n"
                                      "include\n"
                                      "ro\n"
                                      "{\n"
                                      "# a comment counts here too\n"
                                      "status\n"
                                      ",\n"
                                      "index\n"
                                      "{\n"
                                      "input\n"
                                      "}\n"
                                      "}\n"
                                      "exclude rw { a,\n"
                                      "b { index { c }\n"
                                      "index { d } } }\n"
                                      "}\n";
    const PresetDefinitions expected{
        {{4, {{6, {"old"}}}, {{9, "level", {{15, 1, {{"input", "x"}}}}, {{12, "gain", {}}}}}}},
        {{20,
          "scene",
          {includeList(22, {clause(29, {plain("input")})}, {{26, "status", {}}})},
          {excludeList(
              33, {},
              {{33, "a", {}}, {34, "b", {clause(34, {plain("c")}), clause(35, {plain("d")})}}})}}}};
    EXPECT_EQ(readFile(text).definitions, expected);
}

struct LineRow {
    std::string_view text;
    PresetParseResult result;
};

constexpr LineRow lineRows[] = {
    {"", PARSE_PRESET_OK},
    {"\n", PARSE_PRESET_OK},
    {" \t\v\f\r\n", PARSE_PRESET_OK},
    {"# a comment\n", PARSE_PRESET_OK},
    {"  # scene preset {", PARSE_PRESET_OK},
    {"scene preset\n", PARSE_PRESET_CONTINUE},
    {"", PARSE_PRESET_CONTINUE},
    {" \n", PARSE_PRESET_CONTINUE},
    {"# } } }\n", PARSE_PRESET_CONTINUE},
    {"{", PARSE_PRESET_CONTINUE},
    {"include ro {\n", PARSE_PRESET_CONTINUE},
    {"x }\n", PARSE_PRESET_CONTINUE},
    {"} # preset", PARSE_PRESET_CONTINUE},
    {"{ }", PARSE_PRESET_OK},
    {"\n", PARSE_PRESET_OK},
    {"translate\n", PARSE_PRESET_CONTINUE},
    {"\n", PARSE_PRESET_CONTINUE},
    {"{ removed { x } } translate\n", PARSE_PRESET_CONTINUE},
    {"{ removed { y }\n", PARSE_PRESET_CONTINUE},
    {"} scene preset { }", PARSE_PRESET_OK},
};

TEST(PresetDefParser, SaysAfterEachLineWhetherABlockIsOpen) {
    PresetDefinitions definitions;
    PresetDefParser parser;
    std::uint32_t number = 0;
    for (const auto& [text, result] : lineRows) {
        auto column = untouched;
        EXPECT_EQ(parser.parsePresetDefLine(definitions, column, text, ++number), result) << text;
        EXPECT_EQ(column, untouched) << text;
    }
    const PresetDefinitions expected{{removedSection(18, "x"), removedSection(19, "y")},
                                     {{6, "scene", {includeList(11, {}, {{12, "x", {}}})}, {}},
                                      emptyPreset(13, "#"),
                                      emptyPreset(20, "scene")}};
    EXPECT_EQ(definitions, expected);
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
    PresetDefinitions completed; ///< without line numbers
};

const RefusedRow refusedRows[] = {
    {"a preset named like the keyword", "preset~preset@ {", PARSE_PRESET_INVALID_IDENTIFIER, {}},
    {"a header of one word", "scene~@{", PARSE_PRESET_INVALID_IDENTIFIER, {}},
    {"a header without name", " @{ }", PARSE_PRESET_INVALID_IDENTIFIER, {}},
    {"a closing brace outside of blocks", "}@", PARSE_PRESET_INVALID_IDENTIFIER, {}},
    {"a closing brace too many, and a word",
     "scene~preset { } }~x@ {",
     PARSE_PRESET_INVALID_IDENTIFIER,
     {{}, {emptyPreset(0, "scene")}}},
    {"an opening brace after a block",
     "scene~preset { } @{",
     PARSE_PRESET_INVALID_IDENTIFIER,
     {{}, {emptyPreset(0, "scene")}}},
    {"a preset cannot be named like the other keyword",
     "translate @preset { }",
     PARSE_PRESET_SYNTAX,
     {}},
    {"the keyword in capitals is a name",
     "Translate~@{ removed { x } }",
     PARSE_PRESET_INVALID_IDENTIFIER,
     {}},
    {"an empty section", "translate { }@", PARSE_PRESET_EMPTY_DEFINITION, {}},
    {"a section with a stray brace", "translate { @{ }", PARSE_PRESET_MISSING_IDENTIFIER, {}},
    {"a byte after the end of a block",
     "scene~preset { include ro { x } @}x",
     PARSE_PRESET_SYNTAX,
     {}},
    {"a mistake in the second of three blocks",
     "translate { removed { x } } a~preset { @foo } b~preset { }",
     PARSE_PRESET_SYNTAX,
     {{removedSection(0, "x")}, {}}},
};

TEST(PresetDefParser, StopsAtTheMistakeAndKeepsWhatWasComplete) {
    for (const auto& [why, text, result, completed] : refusedRows) {
        SCOPED_TRACE(why);
        for (const auto& layout : test::layoutsOf(text)) {
            const auto reading = readFile(test::withoutMark(layout));
            EXPECT_EQ(reading.result, result) << layout;
            EXPECT_EQ(reading.stop, layout);
            EXPECT_EQ(withoutLines(reading.definitions), completed) << layout;
        }
    }
}

} // namespace
} // namespace morvane
