#include "presetdef/preset_def_file.h"
#include "support/output_capture.h"
#include "support/preset_records.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

using enum PresetParseResult;
using test::Everything;
using test::includeList;

/// The outcome of reading a file.
struct Outcome {
    PresetParseResult result = PARSE_PRESET_INTERNAL_ERR;
    std::string output; ///< on standard output
    PresetDefinitions definitions;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << testing::PrintToString(outcome.result) << " "
         << testing::PrintToString(outcome.definitions) << " output:\n"
         << outcome.output;
}

Outcome readPath(const char* path) {
    Outcome outcome;
    outcome.output = test::standardOutputOf(
        [&] { outcome.result = readPresetDefFile(path, &outcome.definitions); });
    return outcome;
}

Outcome readContent(std::string_view content) {
    const test::TempFolder folder;
    return readPath(folder.write("presets", content).c_str());
}

PresetDefinition emptyPreset(std::uint32_t line, const char* name) {
    return {line, name, {}, {}};
}

TEST(PresetDefFile, NeedsAFileAndATarget) {
    const test::TempFolder folder;
    const auto path = folder.write("presets", "scene preset { }\n");
    const Outcome ioError{PARSE_PRESET_IO_ERROR, "", {}};
    EXPECT_EQ(readPath(nullptr), ioError);
    EXPECT_EQ(readPath(folder.path("missing").c_str()), ioError);
    EXPECT_EQ(readPath(folder.path("").c_str()), ioError) << "a folder has no line";
    EXPECT_EQ(test::standardOutputOf([&] {
                  EXPECT_EQ(readPresetDefFile(path.c_str(), nullptr), PARSE_PRESET_IO_ERROR);
              }),
              "");
}

struct FileRow {
    const char* why;
    std::string_view content;
    Outcome outcome;
};

const FileRow silentRows[] = {
    {"an empty file", "", {PARSE_PRESET_IO_ERROR, "", {}}},
    {"a line feed", "\n", {PARSE_PRESET_OK, "", {}}},
    {"comments and blank lines", "# a\n\n \t\n  # b", {PARSE_PRESET_OK, "", {}}},
    {"two presets of one name are both kept",
     "a preset { include ro { all } }\n\na preset { }\n",
     {PARSE_PRESET_OK,
      "",
      {{}, {{1, "a", {includeList(1, {}, {}, Everything::yes)}, {}}, emptyPreset(3, "a")}}}},
    {"no line feed at the end",
     "translate {\nremoved { x } }\na preset { }",
     {PARSE_PRESET_OK, "", {{{1, {{2, {"x"}}}, {}}}, {emptyPreset(3, "a")}}}},
    {"CRLF line ends", "a preset {\r\n}\r\n", {PARSE_PRESET_OK, "", {{}, {emptyPreset(1, "a")}}}},
    {"a preset left open",
     "a preset { }\nb preset {\n",
     {PARSE_PRESET_CONTINUE, "", {{}, {emptyPreset(1, "a")}}}},
    {"a section left open, followed by a comment",
     "translate {\n# }\n",
     {PARSE_PRESET_CONTINUE, "", {}}},
    {"a list left open", "a preset { include ro { x", {PARSE_PRESET_CONTINUE, "", {}}},
};

TEST(PresetDefFile, ReadsToTheEndSilently) {
    for (const auto& [why, content, outcome] : silentRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readContent(content), outcome);
    }
}

const FileRow reportRows[] = {
    {"an unexpected character",
     "a preset { }\n# comment\nscene preset {\n  include ro { all, x }\n}\nb preset { }\n",
     {PARSE_PRESET_SYNTAX,
      "PARSE_PRESET_SYNTAX Error on line 4\n"
      "  include ro { all, x }\n"
      "                  ^\n",
      {{}, {emptyPreset(1, "a")}}}},
    {"\"none\" beside an index",
     "scene preset { exclude rw { index { a, none } } }\n",
     {PARSE_PRESET_INVALID_INDEX,
      "PARSE_PRESET_INVALID_INDEX Error on line 1\n"
      "scene preset { exclude rw { index { a, none } } }\n"
      "                                             ^\n",
      {}}},
    {"a descending range",
     "scene preset { exclude rw { index { a {5..2} } } }\n",
     {PARSE_PRESET_INVALID_RANGE,
      "PARSE_PRESET_INVALID_RANGE Error on line 1\n"
      "scene preset { exclude rw { index { a {5..2} } } }\n"
      "                                           ^\n",
      {}}},
    {"an access type that does not fit an include list",
     "scene preset { include rw { x } }\n",
     {PARSE_PRESET_INC_EXC_ACCESS_ERR,
      "PARSE_PRESET_INC_EXC_ACCESS_ERR Error on line 1\n"
      "scene preset { include rw { x } }\n"
      "                         ^\n",
      {}}},
    {"an access type that does not fit an exclude list",
     "scene preset { exclude ro { x } }\n",
     {PARSE_PRESET_INC_EXC_ACCESS_ERR,
      "PARSE_PRESET_INC_EXC_ACCESS_ERR Error on line 1\n"
      "scene preset { exclude ro { x } }\n"
      "                         ^\n",
      {}}},
    {"a missing name",
     "translate {\n{\n",
     {PARSE_PRESET_MISSING_IDENTIFIER,
      "PARSE_PRESET_MISSING_IDENTIFIER Error on line 2\n"
      "{\n"
      "^\n",
      {}}},
    {"a bad header",
     "preset preset {\n",
     {PARSE_PRESET_INVALID_IDENTIFIER,
      "PARSE_PRESET_INVALID_IDENTIFIER Error on line 1\n"
      "preset preset {\n"
      "             ^\n",
      {}}},
    {"a header over two lines: the caret is after the line feed",
     "\nscene\npreset {\n}\n",
     {PARSE_PRESET_INVALID_IDENTIFIER,
      "PARSE_PRESET_INVALID_IDENTIFIER Error on line 2\n"
      "scene\n"
      "      ^\n",
      {}}},
    {"an index mapping without count",
     "translate { level { index x { a = b } } }\n",
     {PARSE_PRESET_INVALID_INTEGER,
      "PARSE_PRESET_INVALID_INTEGER Error on line 1\n"
      "translate { level { index x { a = b } } }\n"
      "                          ^\n",
      {}}},
    {"an empty section",
     "translate { }\n",
     {PARSE_PRESET_EMPTY_DEFINITION,
      "PARSE_PRESET_EMPTY_DEFINITION Error on line 1\n"
      "translate { }\n"
      "             ^\n",
      {}}},
    {"a last line without line feed gets one",
     "scene preset { }x",
     {PARSE_PRESET_SYNTAX,
      "PARSE_PRESET_SYNTAX Error on line 1\n"
      "scene preset { }x\n"
      "               ^\n",
      {}}},
    {"every byte before the mistake is one blank",
     "\t\xc3\xa4 preset {\t, }\n",
     {PARSE_PRESET_SYNTAX,
      "PARSE_PRESET_SYNTAX Error on line 1\n"
      "\t\xc3\xa4 preset {\t, }\n"
      "             ^\n",
      {}}},
    {"carriage returns are part of the line",
     "scene preset {\r\n  foo\r\n}\r\n",
     {PARSE_PRESET_SYNTAX,
      "PARSE_PRESET_SYNTAX Error on line 2\n"
      "  foo\r\n"
      "  ^\n",
      {}}},
    {"only the first mistake counts",
     "scene preset { , }\npreset preset {\n",
     {PARSE_PRESET_SYNTAX,
      "PARSE_PRESET_SYNTAX Error on line 1\n"
      "scene preset { , }\n"
      "               ^\n",
      {}}},
    {"blocks completed on the line of the mistake stay",
     "a preset { } b preset { } c\n",
     {PARSE_PRESET_INVALID_IDENTIFIER,
      "PARSE_PRESET_INVALID_IDENTIFIER Error on line 1\n"
      "a preset { } b preset { } c\n"
      "                            ^\n",
      {{}, {emptyPreset(1, "a"), emptyPreset(1, "b")}}}},
};

TEST(PresetDefFile, ReportsTheFirstMistakeWithItsLineAndACaret) {
    for (const auto& [why, content, outcome] : reportRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readContent(content), outcome);
    }
}

TEST(PresetDefFile, BeginsEachReadingAnew) {
    EXPECT_EQ(readContent("scene preset { include ro {").result, PARSE_PRESET_CONTINUE);
    EXPECT_EQ(readContent("a preset { }\n"),
              (Outcome{PARSE_PRESET_OK, "", {{}, {emptyPreset(1, "a")}}}));
}

// Lines are read in pieces of at most 511 bytes.

std::string comment(std::size_t length) {
    std::string text(length, '#');
    return text;
}

struct LongLineRow {
    const char* why;
    std::string firstLine; ///< without its line feed
    std::uint32_t nextLine;
};

const LongLineRow longLineRows[] = {
    {"510 bytes and the line feed are one piece", comment(510), 2},
    {"the line feed after 511 bytes is a piece of its own", comment(511), 3},
    {"600 bytes are two pieces", comment(600), 3},
    {"1021 bytes and the line feed are two pieces", comment(1021), 3},
    {"1022 bytes and the line feed are three pieces", comment(1022), 4},
};

TEST(PresetDefFile, CountsEveryPieceOfALongLine) {
    for (const auto& [why, firstLine, nextLine] : longLineRows) {
        SCOPED_TRACE(why);
        const auto outcome = readContent(firstLine + "\na preset { }\n");
        EXPECT_EQ(outcome, (Outcome{PARSE_PRESET_OK, "", {{}, {emptyPreset(nextLine, "a")}}}));
    }
}

TEST(PresetDefFile, ReportsThePieceThatHoldsTheMistake) {
    const std::string blanks(505, ' ');
    const Outcome inTheFirst{PARSE_PRESET_SYNTAX,
                             "PARSE_PRESET_SYNTAX Error on line 2\n" + blanks + "} , y \n" +
                                 std::string(507, ' ') + "^\n",
                             {}};
    EXPECT_EQ(readContent("a preset { include ro { x\n" + blanks + "} , y { z }\n"), inTheFirst);
    const Outcome inTheSecond{PARSE_PRESET_SYNTAX,
                              "PARSE_PRESET_SYNTAX Error on line 3\n"
                              ", zz w }\n"
                              "     ^\n",
                              {}};
    EXPECT_EQ(readContent("a preset { include ro { x\n" + blanks + " , yy , zz w }\n"),
              inTheSecond);
}

TEST(PresetDefFile, CutsAWordBetweenTwoPieces) {
    const auto head = "a preset { include ro { " + std::string(483, ' ');
    const Outcome cut{PARSE_PRESET_SYNTAX,
                      "PARSE_PRESET_SYNTAX Error on line 2\n"
                      "n }}\n"
                      "^\n",
                      {}};
    EXPECT_EQ(readContent(head + "gain }}\n").result, PARSE_PRESET_OK);
    EXPECT_EQ(readContent(head + " gain }}\n"), cut);
}

/// Where reading ended.
struct Stop {
    PresetParseResult result = PARSE_PRESET_INTERNAL_ERR;
    SourceText::Place place;
    SourceText::Place begin;

    bool operator==(const Stop&) const = default;
};

Stop stopIn(std::string_view content) {
    const test::TempFolder folder;
    const OwnedStream stream(std::fopen(folder.write("presets", content).c_str(), "r"));
    PresetDefinitions definitions;
    PresetDefStop stop;
    const auto result = readPresetDefinitions(stream.get(), definitions, stop);
    return {result, stop.place, stop.begin};
}

TEST(PresetDefFile, SaysWhereAnErrorIs) {
    EXPECT_EQ(stopIn("a preset { }\nb preset { x }\n"),
              (Stop{PARSE_PRESET_SYNTAX, {2, 11}, {2, 11}}));
    EXPECT_EQ(stopIn("a preset {\n exclude ro { } }\n"),
              (Stop{PARSE_PRESET_INC_EXC_ACCESS_ERR, {2, 11}, {2, 9}}));
    EXPECT_EQ(stopIn("").result, PARSE_PRESET_IO_ERROR);
}

TEST(PresetDefFile, SaysWhichBlockIsOpenAtTheEnd) {
    EXPECT_EQ(stopIn("a preset { }\n b preset {\ninclude ro {\n"),
              (Stop{PARSE_PRESET_CONTINUE, {}, {2, 1}}));
    EXPECT_EQ(stopIn("a preset { } translate { removed {"),
              (Stop{PARSE_PRESET_CONTINUE, {}, {1, 13}}));
}

TEST(PresetDefFile, TakesASecondPieceForACommentToo) {
    const auto head = "a preset {" + std::string(501, ' ');
    EXPECT_EQ(readContent(head + "# foo\n}\n"),
              (Outcome{PARSE_PRESET_OK, "", {{}, {emptyPreset(1, "a")}}}));
}

} // namespace
} // namespace morvane
