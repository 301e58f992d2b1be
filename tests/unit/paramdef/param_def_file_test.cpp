#include "paramdef/param_def_file.h"
#include "support/output_capture.h"
#include "support/parameter_text.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

/// The outcome of reading a file.
struct Outcome {
    ParamDefResult result = ParamDefResult::incomplete;
    std::string output; ///< on standard output
    std::string table;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << static_cast<int>(outcome.result) << " " << outcome.table << " output:\n"
         << outcome.output;
}

Outcome readPath(const char* path, KeptAttributes kept = KeptAttributes::all) {
    Outcome outcome;
    SystemParameterTable table;
    outcome.output =
        test::standardOutputOf([&] { outcome.result = readParamDefFile(path, &table, kept); });
    outcome.table = test::textOf(table);
    return outcome;
}

Outcome readContent(std::string_view content, KeptAttributes kept = KeptAttributes::all) {
    const test::TempFolder folder;
    return readPath(folder.write("parameters", content).c_str(), kept);
}

TEST(ParamDefFile, NeedsAFileAndATable) {
    const test::TempFolder folder;
    const auto path = folder.write("parameters", "p rw { }\n");
    EXPECT_EQ(readPath(nullptr), (Outcome{ParamDefResult::internalError, "", ""}));
    EXPECT_EQ(readPath(folder.path("missing").c_str()),
              (Outcome{ParamDefResult::internalError, "Can't open file\n", ""}));
    EXPECT_EQ(readPath(folder.path("").c_str()), (Outcome{ParamDefResult::internalError, "", ""}))
        << "a folder has no line";
    EXPECT_EQ(test::standardOutputOf([&] {
                  EXPECT_EQ(readParamDefFile(path.c_str(), nullptr), ParamDefResult::internalError);
              }),
              "");
}

struct Row {
    const char* why;
    std::string content;
    Outcome outcome;
};

const Row silentRows[] = {
    {"an empty file", "", {ParamDefResult::internalError, "", ""}},
    {"a line feed", "\n", {ParamDefResult::ok, "", ""}},
    {"comments and blank lines", "# a\n\n \t\n  # b", {ParamDefResult::ok, "", ""}},
    {"no line feed at the end", "p rw { }\nq ro { }", {ParamDefResult::ok, "", "p@1 4\nq@2 1"}},
    {"CRLF line ends", "p rw {\r\n}\r\n", {ParamDefResult::ok, "", "p@1 4"}},
    {"a block left open", "p rw {\n", {ParamDefResult::ok, "", "p@1 4"}},
    {"a string left open", "p rw { default { \"a\n", {ParamDefResult::ok, "", "p@1 4"}},
    {"a null byte ends what is read of its line",
     std::string("p rw { }\0x\nq ro { }\n", 20),
     {ParamDefResult::ok, "", "p@1 4\nq@2 1"}},
};

TEST(ParamDefFile, ReadsToTheEndSilently) {
    for (const auto& [why, content, outcome] : silentRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readContent(content), outcome);
    }
}

const Row reportRows[] = {
    {"an unknown access word",
     "p wr {}\n",
     {ParamDefResult::invalidAccess,
      "Error on line 1\n"
      "Invalid parameter access type\n"
      "p wr {}\n"
      "  ^\n",
      "p@1 0"}},
    {"an unknown attribute",
     "p rw { foo }\n",
     {ParamDefResult::syntaxError,
      "Error on line 1\n"
      "Syntax error\n"
      "p rw { foo }\n"
      "       ^\n",
      "p@1 4"}},
    {"ctrlRO of a write-only parameter",
     "# comment\n\np wo { ctrlRO (1) }\n",
     {ParamDefResult::invalidAccess,
      "Error on line 3\n"
      "Invalid parameter access type\n"
      "p wo { ctrlRO (1) }\n"
      "                ^\n",
      "p@3 3"}},
    {"the first mistake ends the reading",
     "p rw { }\nq xx { }\nr xx { }\n",
     {ParamDefResult::invalidAccess,
      "Error on line 2\n"
      "Invalid parameter access type\n"
      "q xx { }\n"
      "  ^\n",
      "p@1 4\nq@2 0"}},
    {"a last line without a line feed",
     "p rw { rangeValid { 1.5 } }",
     {ParamDefResult::syntaxError,
      "Error on line 1\n"
      "Syntax error\n"
      "p rw { rangeValid { 1.5 } }\n"
      "                     ^\n",
      "p@1 4"}},
    {"a caret counts bytes, including tabs",
     "\tp \xc3\xa4 {\n",
     {ParamDefResult::invalidAccess,
      "Error on line 1\n"
      "Invalid parameter access type\n"
      "\tp \xc3\xa4 {\n"
      "   ^\n",
      "p@1 0"}},
};

TEST(ParamDefFile, ReportsTheFirstMistake) {
    for (const auto& [why, content, outcome] : reportRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readContent(content), outcome);
    }
}

const Row startUpRows[] = {
    {"a range of a parameter that stays none",
     "p rw { rangeValid { 1 } }",
     {ParamDefResult::ok, "", "p@1 4"}},
    {"a range of a parameter that a later block makes an index",
     "p rw {\n rangeValid { 1, \"a\nb\" }\n}\n# q\nq ro { rangeValid { 1 } }\np index { "
     "rangeValid { 2 } }\n",
     {ParamDefResult::ok, "",
      "p@1 0 rangeValid { 1, \"ab\" }; rangeValid { 2 };\nq@6 1 rangeValid { 1 };"}},
    {"a mistake after such a block",
     "p rw { rangeValid { 1 } }\np index { }\nq\nxx { }\n",
     {ParamDefResult::invalidAccess,
      "Error on line 4\n"
      "Invalid parameter access type\n"
      "xx { }\n"
      "^\n",
      "p@1 0 rangeValid { 1 };\nq@3 0"}},
};

TEST(ParamDefFile, KeepsWhatTheStartNeeds) {
    for (const auto& [why, content, outcome] : startUpRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readContent(content, KeptAttributes::ofStartUp), outcome);
    }
}

// Lines are read in pieces of at most 511 bytes.

std::string blanks(std::size_t count) {
    return std::string(count, ' '); // NOLINT(modernize-return-braced-init-list): that is two bytes
}

struct LongLineRow {
    const char* why;
    std::string content;
    const char* line; ///< the line number of the mistake after it
};

const LongLineRow longLineRows[] = {
    {"511 bytes with the line feed", "p rw {" + blanks(503) + "}\n", "2"},
    {"511 bytes and the line feed", "p rw {" + blanks(504) + "}\n", "3"},
    {"512 bytes and the line feed", "p rw {" + blanks(505) + "}\n", "3"},
    {"600 bytes", "p rw {" + blanks(592) + "}\n", "3"},
    {"1022 bytes and the line feed", "p rw {" + blanks(1015) + "}\n", "4"},
};

TEST(ParamDefFile, CountsThePiecesOfALongLine) {
    for (const auto& [why, content, line] : longLineRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readContent(content + "q xx\n"),
                  (Outcome{ParamDefResult::invalidAccess,
                           std::string("Error on line ") + line +
                               "\nInvalid parameter access type\nq xx\n  ^\n",
                           std::string("p@1 4\nq@") + line + " 0"}));
    }
}

TEST(ParamDefFile, BreaksAWordAtTheEndOfAPiece) {
    const auto outcome = readContent(blanks(508) + "name rw { }\n");
    EXPECT_EQ(outcome, (Outcome{ParamDefResult::invalidAccess,
                                "Error on line 2\nInvalid parameter access type\ne rw { }\n^\n",
                                "nam@1 0"}));
}

// Where a stream with this text cannot be read on, and what the parser then expects.
ParamDefError errorIn(std::string_view content) {
    const test::TempFolder folder;
    const OwnedStream stream(std::fopen(folder.write("parameters", content).c_str(), "r"));
    SystemParameterTable table;
    const auto error = readParamDefinitions(stream.get(), table, KeptAttributes::all);
    return error.value_or(ParamDefError{ParamDefResult::ok, {}, {}});
}

TEST(ParamDefFile, SaysWhereAnErrorIsAndWhatWasExpected) {
    const auto error = errorIn("p rw { }\nq rw { default 3 }\n");
    EXPECT_EQ(error.result, ParamDefResult::syntaxError);
    EXPECT_EQ(error.place, (SourceText::Place{2, 15}));
    EXPECT_EQ(error.state, ParamDefParseState::inDefault);
    EXPECT_EQ(errorIn("p rw { }\n# \n").result, ParamDefResult::ok);
    EXPECT_EQ(errorIn("").result, ParamDefResult::ok);
}

TEST(ParamDefFile, SaysWhichBlockIsOpenAtTheEnd) {
    const auto error = errorIn("p rw { }\nq rw { }  p rw {\nindex { a }\n# }\n");
    EXPECT_EQ(error.result, ParamDefResult::incomplete);
    EXPECT_EQ(error.place, (SourceText::Place{2, 10}));
    EXPECT_EQ(error.state, ParamDefParseState::expectAttribute);
}

TEST(ParamDefFile, TakesACommentOnlyToTheEndOfItsPiece) {
    const auto outcome = readContent("#" + blanks(510) + "p xx\n");
    EXPECT_EQ(outcome,
              (Outcome{ParamDefResult::invalidAccess,
                       "Error on line 2\nInvalid parameter access type\np xx\n  ^\n", "p@2 0"}));
}

} // namespace
} // namespace morvane
