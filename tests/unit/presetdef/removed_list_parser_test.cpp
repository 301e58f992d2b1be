#include "presetdef/removed_list_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using enum PresetParseResult;

struct ListRow {
    const char* why;
    std::string_view text;
    RemovedList list;
};

const ListRow listRows[] = {
    {"one name", "{ old }@", {1, {"old"}}},
    {"no blanks, and more on the line", "{old}@}", {1, {"old"}}},
    {"several names in file order with duplicates", "{ b , a,b }@ x", {1, {"b", "a", "b"}}},
    {"a name with an opening brace", "{ {old }@", {1, {"{old"}}},
    {"a name of any bytes", "{ \"a=\xc3\xa4\" }@", {1, {"\"a=\xc3\xa4\""}}},
};

TEST(RemovedListParser, ReadsNames) {
    for (const auto& [why, text, list] : listRows) {
        SCOPED_TRACE(why);
        test::expectReads<RemovedListParser>(text, list);
    }
}

TEST(RemovedListParser, KeepsTheLineOfTheOpeningBrace) {
    RemovedListParser parser;
    EXPECT_EQ(test::readWith(parser, "\n{\nold\n}").record, (RemovedList{2, {"old"}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a name instead of the brace", " @old }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", " @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", " @, old }", PARSE_PRESET_SYNTAX},

    {"an empty list", "{ @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a leading comma", "{ @, a }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma before the end", "{ a, @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"two commas", "{ a, @, b }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a name after a name", "{ a @b }", PARSE_PRESET_SYNTAX},
    {"a brace after a name", "{ a @{ b }", PARSE_PRESET_SYNTAX},
    {"a sign after a name", "{ a @= b }", PARSE_PRESET_SYNTAX},
};

TEST(RemovedListParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<RemovedListParser>(text, result);
    }
}

} // namespace
} // namespace morvane
