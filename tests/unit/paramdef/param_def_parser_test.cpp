#include "paramdef/param_def_parser.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

/// What a text was read as.
struct Outcome {
    test::AttributeReading reading;
    std::string table;
    bool lacksRanges = false;
};

Outcome read(std::string_view text, KeptAttributes kept = KeptAttributes::all) {
    Outcome outcome;
    ParamDefParser parser(kept);
    SystemParameterTable table;
    std::size_t before = 0;
    std::uint32_t number = 0;
    for (const auto line : test::linesOf(text)) {
        std::uint32_t column = 0;
        outcome.reading.result = parser.parseParamDefLine(table, column, line, ++number);
        if (outcome.reading.result != ParamDefResult::ok) {
            outcome.reading.stop = std::string(text).insert(before + column, "@");
            break;
        }
        before += line.size();
    }
    outcome.table = test::textOf(table);
    outcome.lacksRanges = parser.lacksRanges();
    return outcome;
}

struct Row {
    const char* why;
    std::string_view text;
    std::string_view table;
};

constexpr Row rows[] = {
    {"no attribute", "p rw { }", "p@1 4"},
    {"without blanks where a word ends", "p rw{}", "p@1 4"},
    {"every access type", "a index { } b ro { } c rostrict { } d wo { } e rw { }",
     "a@1 0\nb@1 1\nc@1 2\nd@1 3\ne@1 4"},
    {"names in bytewise order", "b rw { } B rw { } a rw { } \xc3\xa4 rw { } a1 rw { }",
     "B@1 4\na@1 4\na1@1 4\nb@1 4\n\xc3\xa4@1 4"},
    {"a name of anything but white space and brackets", "{p}(,\"# rw { }", "{p}(,\"#@1 4"},
    {"every attribute",
     "p rw { index { i } rangeValid { 1 } rangeDoc { 2 } ctrlRO ( a ) ctrlValid ( b ) "
     "default { 3 } valueChange { 4 -> 5 } }",
     "p@1 4 index i; rangeValid { 1 }; rangeDoc { 2 }; ctrlRO a; ctrlValid b; default { 3 }; "
     "valueChange \"4\" -> \"5\";"},
    {"attributes without blanks",
     "p rw{index{i}rangeValid(c){1}ctrlRO(a)ctrlValid(b)default(d){3}valueChange{4->5}}",
     "p@1 4 index i; rangeValid [c] { 1 }; ctrlRO a; ctrlValid b; default [d] { 3 }; "
     "valueChange \"4\" -> \"5\";"},
    {"repeated attributes stay in file order",
     "p rw { index { i } rangeValid { 1 } index { j } rangeValid { 2 } ctrlValid ( a ) "
     "ctrlValid ( b ) }",
     "p@1 4 index i; index j; rangeValid { 1 }; rangeValid { 2 }; ctrlValid a; ctrlValid b;"},
    {"a name twice: the first record, the last access, all attributes",
     "p rw { default { 1 } } q rw { } p ro { default { 2 } ctrlRO ( c ) }",
     "p@1 1 ctrlRO c; default { 1 }; default { 2 };\nq@1 4"},
    {"empty conditions", "p rw { ctrlRO ( ) ctrlValid() }", "p@1 4 ctrlRO ; ctrlValid ;"},
    {"several dimensions and names", "p rw { index { a , b } index { c } }",
     "p@1 4 index a b; index c;"},
};

TEST(ParamDefParser, ReadsBlocksInOneLine) {
    for (const auto& [why, text, table] : rows) {
        SCOPED_TRACE(why);
        const auto outcome = read(text);
        EXPECT_EQ(outcome.reading.result, ParamDefResult::ok);
        EXPECT_EQ(outcome.table, table);
    }
}

// The line of a parameter depends on the layout, everything else does not.
TEST(ParamDefParser, ReadsABlockInEveryLayout) {
    const std::string_view attributes =
        " rw { index { i , j } rangeValid ( a == 2 ) { 0 .. 7 , \"b~c\" , ( d ) } ctrlRO~( e ) "
        "ctrlValid~( ( f ) ) default { ( g + 1 ) } valueChange { 4 -> \"x\" } }";
    for (const auto& layout : test::layoutsOf("p" + std::string(attributes))) {
        const auto outcome = read(layout);
        EXPECT_EQ(outcome.reading.result, ParamDefResult::ok) << layout;
        EXPECT_EQ(outcome.table,
                  "p@1 4 index i j; rangeValid [a == 2] { 0..7, \"b c\", d }; ctrlRO e; "
                  "ctrlValid ( f ); default { g + 1 }; valueChange \"4\" -> \"x\";")
            << layout;
    }
}

constexpr Row lineRows[] = {
    {"blocks on lines of their own", "a rw { }\n\nb\nrw\n{\n}\n", "a@1 4\nb@3 4"},
    {"a block that ends where the next begins", "a rw {\n} b rw {\n}c rw { }\n",
     "a@1 4\nb@2 4\nc@3 4"},
    {"comments around the words of a block", "# a\np\n# c {\nrw\n # d\n{\n\t# e }\n}\n", "p@2 4"},
    {"comments in a range", "p rw { rangeValid {\n# 7,\n1\n# ..\n..\n# 2\n5 } }\n",
     "p@1 4 rangeValid { 1..5 };"},
    {"comments in an expression", "p rw { ctrlValid (a\n# b )\n&& c) }\n",
     "p@1 4 ctrlValid a && c;"},
    {"a comment in a string", "p rw { default { \"a\n# b\"\n c\" } }\n",
     "p@1 4 default { \"ac\" };"},
    {"blank lines in a string", "p rw { default { \"a\n\n \t\n b\" } }\n",
     "p@1 4 default { \"ab\" };"},
    {"a string loses its line feed and the next line's indent",
     "p rw { default { \"a \n   b\" } }\n", "p@1 4 default { \"a b\" };"},
    {"a string keeps its carriage return", "p rw { default { \"a\r\nb\" } }\n",
     "p@1 4 default { \"a\rb\" };"},
    {"a file that ends inside a block", "p rw { rangeValid {", "p@1 4"},
    {"a name twice keeps its first line", "p rw { }\np ro { }\n", "p@1 1"},
};

TEST(ParamDefParser, ReadsOverLinesAndComments) {
    for (const auto& [why, text, table] : lineRows) {
        SCOPED_TRACE(why);
        const auto outcome = read(text);
        EXPECT_EQ(outcome.reading.result, ParamDefResult::ok);
        EXPECT_EQ(outcome.table, table);
    }
}

struct MistakeRow {
    const char* why;
    const char* text; ///< "@" at the caret
    ParamDefResult result;
    const char* table; ///< what had been read
};

constexpr auto ok = ParamDefResult::ok;
constexpr auto access = ParamDefResult::invalidAccess;
constexpr auto syntax = ParamDefResult::syntaxError;

constexpr MistakeRow mistakes[] = {
    {"no name", "@[ rw { }", syntax, ""},
    {"a name that a bracket ends", "p@[1] rw { }", access, "p@1 0"},
    {"an unknown access word", "p @wr { }", access, "p@1 0"},
    {"an access word in capitals", "p @RW { }", access, "p@1 0"},
    {"the number of an access type", "p @4 { }", access, "p@1 0"},
    {"no access word", "p @{ }", access, "p@1 0"},
    {"an access word with something after it", "p @rw(a) { }", access, "p@1 0"},
    {"a # after the name begins no comment", "p @# b", access, "p@1 0"},
    {"no brace", "p rw @rangeValid { }", syntax, "p@1 4"},
    {"an unknown attribute", "p rw { @foo }", syntax, "p@1 4"},
    {"an attribute in capitals", "p rw { @RangeValid { } }", syntax, "p@1 4"},
    {"an empty attribute", "p rw { @{ } }", syntax, "p@1 4"},
    {"a closing brace that is part of a word", "p rw { @foo} }", syntax, "p@1 4"},
    {"no parenthesis after ctrlRO", "p rw { @ctrlRO { } }", syntax, "p@1 4"},
    {"no parenthesis after ctrlValid", "p rw { @ctrlValid a }", syntax, "p@1 4"},
    {"a parenthesis on the next line", "p rw { @ctrlValid\n(a) }", syntax, "p@1 4"},
    {"ctrlRO of a write-only parameter", "p wo { ctrlRO (1@) }", access, "p@1 3"},
    {"ctrlRO of a write-only parameter over lines", "p wo { ctrlRO (1\n  @) }", access, "p@1 3"},
    {"a mistake in an expression", "p rw { ctrlValid (a @!b) }", syntax, "p@1 4"},
    {"a mistake in a range", "p rw { rangeValid { 1@.5 } }", syntax, "p@1 4"},
    {"a mistake in a documented range", "p rw { rangeDoc { @, } }", syntax, "p@1 4"},
    {"a mistake in a default", "p rw { default { @} }", syntax, "p@1 4"},
    {"a mistake in a value change", "p rw { valueChange { 1 @} }", syntax, "p@1 4"},
    {"a mistake in an index", "p rw { index { @} }", syntax, "p@1 4"},
    {"a mistake in a later line", "p rw {\n  default { 1 }\n\tindex { a, @} }", syntax,
     "p@1 4 default { 1 };"},
    {"a mistake in a later block", "p rw { } q rw { default { 1 } @x", syntax,
     "p@1 4\nq@1 4 default { 1 };"},
};

TEST(ParamDefParser, RefusesMistakesWhereTheyStand) {
    for (const auto& [why, text, result, table] : mistakes) {
        SCOPED_TRACE(why);
        const auto outcome = read(test::withoutMark(text));
        EXPECT_EQ(outcome.reading.result, result);
        EXPECT_EQ(outcome.reading.stop, text);
        EXPECT_EQ(outcome.table, table);
    }
}

struct KeptRow {
    const char* why;
    std::string_view text; ///< "@" at the caret of a mistake, if there is one
    ParamDefResult result;
    std::string_view table;
};

constexpr KeptRow keptRows[] = {
    {"every attribute",
     "p rw { index { i } rangeValid { 1 } rangeDoc { 2 } ctrlRO ( a ) ctrlValid ( b ) "
     "default { 3 } valueChange { 4 -> 5 } rangeValid ( c ) { 6..7 } }@",
     ok, "p@1 4 index i; ctrlValid b;"},
    {"every attribute of an index",
     "p index { index { i } rangeValid { 1 } rangeDoc { 2 } ctrlRO ( a ) ctrlValid ( b ) "
     "default { 3 } valueChange { 4 -> 5 } rangeValid ( c ) { 6..7 } }@",
     ok, "p@1 0 index i; rangeValid { 1 }; rangeValid [c] { 6..7 }; ctrlValid b;"},
    {"one attribute after the other, the next as if there had been none before",
     "p index { rangeDoc (a) { 2, 3 } rangeValid { 1 } default (b) { 3 } default { 4 } "
     "ctrlRO ( a ) ctrlValid ( b ) }@",
     ok, "p@1 0 rangeValid { 1 }; ctrlValid b;"},
    {"a range after that of another parameter",
     "p rw { rangeValid (a) { 2, 3 } } q index { rangeValid { 1 } }@", ok,
     "p@1 4\nq@1 0 rangeValid { 1 };"},
    {"a mistake in a range", "p rw { rangeValid { @, } }", syntax, "p@1 4"},
    {"ctrlRO of a write-only parameter", "p wo { ctrlRO (1@) }", access, "p@1 3"},
    {"a mistake in a documented range", "p rw { rangeDoc { @, } }", syntax, "p@1 4"},
    {"a mistake in a default", "p rw { default { @} }", syntax, "p@1 4"},
    {"a mistake in a value change", "p rw { valueChange { 1 @} }", syntax, "p@1 4"},
    {"a mistake in an expression", "p rw { ctrlRO (a @!b) }", syntax, "p@1 4"},
};

TEST(ParamDefParser, ChecksWhatItDoesNotKeep) {
    for (const auto& [why, text, result, table] : keptRows) {
        SCOPED_TRACE(why);
        const auto outcome = read(test::withoutMark(text), KeptAttributes::ofStartUp);
        EXPECT_EQ(outcome.reading.result, result);
        EXPECT_EQ(outcome.reading.stop, result == ok ? "" : text);
        EXPECT_EQ(outcome.table, table);
    }
}

struct LackRow {
    std::string_view text;
    bool all;     ///< whether ranges are lacking that the start-up needs if all attributes are kept
    bool startUp; ///< and if those of the start-up are
};

constexpr LackRow lackRows[] = {
    {"p index { rangeValid { 1 } }", false, false},
    {"p rw { rangeValid { 1 } } q index { rangeValid { 1 } }", false, false},
    {"p index { rangeValid { 1 } } p rw { rangeValid { 2 } }", false, false},
    {"p rw { rangeValid { 1 } } p index { } q rw { }", false, true},
    {"p index { } p rw { rangeValid { 1 } } p index { }", false, true},
};

TEST(ParamDefParser, KnowsThatItLacksRangesOfAnIndex) {
    for (const auto& [text, all, startUp] : lackRows) {
        EXPECT_EQ(read(text).lacksRanges, all) << text;
        EXPECT_EQ(read(text, KeptAttributes::ofStartUp).lacksRanges, startUp) << text;
    }
}

struct GoneRow {
    const char* before; ///< the parameter is removed after this line
    const char* after;  ///< and missing in this one
};

constexpr GoneRow goneRows[] = {
    {"p\n", "rw { }\n"},
    {"p rw { default { 1\n", "}\n"},
    {"p rw { ctrlRO (\n", ")\n"},
};

TEST(ParamDefParser, ReportsAParameterThatIsGone) {
    for (const auto& [before, after] : goneRows) {
        ParamDefParser parser;
        SystemParameterTable table;
        std::uint32_t column = 0;
        EXPECT_EQ(parser.parseParamDefLine(table, column, before, 1), ParamDefResult::ok);
        table = {};
        EXPECT_EQ(parser.parseParamDefLine(table, column, after, 2), ParamDefResult::internalError)
            << before;
    }
}

TEST(ParamDefParser, LeavesTheColumnOfABlankLineAlone) {
    ParamDefParser parser;
    SystemParameterTable table;
    std::uint32_t column = 7;
    for (const char* const line : {"", "\n", " \t\n", "# a\n", "  # b"}) {
        EXPECT_EQ(parser.parseParamDefLine(table, column, line, 1), ParamDefResult::ok);
        EXPECT_EQ(column, 7U);
    }
}

} // namespace
} // namespace morvane
