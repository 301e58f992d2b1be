#include "presetdef/index_mapping_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvane {
namespace {

using enum PresetParseResult;

constexpr auto highestUnsigned = std::numeric_limits<std::uint32_t>::max();

struct MappingRow {
    const char* why;
    std::string_view text;
    IndexMapping mapping;
};

const MappingRow mappingRows[] = {
    {"one pair", "1 { input = idx::0 }@", {1, 1, {{"input", "idx::0"}}}},
    {"no blanks, and more on the line", "1{input=idx::0}@}", {1, 1, {{"input", "idx::0"}}}},
    {"several pairs in file order",
     "2 { output = main , input = idx::1 }@ x",
     {1, 2, {{"output", "main"}, {"input", "idx::1"}}}},
    {"the same name twice", "0 { a = b, a = c }@", {1, 0, {{"a", "b"}, {"a", "c"}}}},
    {"a leading zero is ignored", "010 { a = b }@", {1, 10, {{"a", "b"}}}},
    {"the greatest number", "4294967295 { a = b }@", {1, highestUnsigned, {{"a", "b"}}}},
    {"a number beyond 32 bits", "4294967296 { a = b }@", {1, highestUnsigned, {{"a", "b"}}}},
    {"a number beyond 64 bits",
     "99999999999999999999 { a = b }@",
     {1, highestUnsigned, {{"a", "b"}}}},
    {"a text with an equals sign", "1 { a = b=c }@", {1, 1, {{"a", "b=c"}}}},
    {"a text that is an equals sign", "1 { a == }@", {1, 1, {{"a", "="}}}},
    {"a name of any bytes but an equals sign", "1 { {a,b} = c }@", {1, 1, {{"{a,b}", "c"}}}},
    {"a text with an opening brace", "1 { a = {b }@", {1, 1, {{"a", "{b"}}}},
    {"quotes are bytes like others", R"(1 { "a" = "b" }@)", {1, 1, {{"\"a\"", "\"b\""}}}},
};

TEST(IndexMappingParser, ReadsACountAndPairs) {
    for (const auto& [why, text, mapping] : mappingRows) {
        SCOPED_TRACE(why);
        test::expectReads<IndexMappingParser>(text, mapping);
    }
}

TEST(IndexMappingParser, KeepsTheLineOfTheCount) {
    IndexMappingParser parser;
    EXPECT_EQ(test::readWith(parser, "\n1\n{\na\n=\nb\n}").record,
              (IndexMapping{2, 1, {{"a", "b"}}}));
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a word instead of the count", " @x { a = b }", PARSE_PRESET_INVALID_INTEGER},
    {"no count", " @{ a = b }", PARSE_PRESET_INVALID_INTEGER},
    {"a closing brace instead of the count", " @}", PARSE_PRESET_INVALID_INTEGER},
    {"a negative count", " @-1 { a = b }", PARSE_PRESET_INVALID_INTEGER},
    {"a signed count", " @+1 { a = b }", PARSE_PRESET_INVALID_INTEGER},

    {"a word instead of the brace", "1 @a = b }", PARSE_PRESET_SYNTAX},
    {"a word right after the count", "1@x { a = b }", PARSE_PRESET_SYNTAX},
    {"a second count", "1 @2 { a = b }", PARSE_PRESET_SYNTAX},
    {"a fraction", "1@.5 { a = b }", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", "1 @}", PARSE_PRESET_SYNTAX},

    {"no index name", "1 { @= b }", PARSE_PRESET_MISSING_IDENTIFIER},
    {"no index name after a comma", "1 { a = b, @= c }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a word after the index name", "1 { a @b }", PARSE_PRESET_SYNTAX},
    {"the closing brace is read as a name", "1 { } @}", PARSE_PRESET_SYNTAX},
    {"the closing brace after a comma likewise", "1 { a = b, } @}", PARSE_PRESET_SYNTAX},
    {"a comma is read as a name", "1 { , @a = b }", PARSE_PRESET_SYNTAX},
    {"a name takes the comma", "1 { a, @b = c }", PARSE_PRESET_SYNTAX},

    {"no text", "1 { a = @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma instead of the text", "1 { a = @, b = c }", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a word after the text", "1 { a = b @c }", PARSE_PRESET_SYNTAX},
    {"a second equals sign", "1 { a = = @b }", PARSE_PRESET_SYNTAX},
    {"an equals sign after the text", "1 { a = b @= c }", PARSE_PRESET_SYNTAX},
    {"a brace after the text", "1 { a = b @{ }", PARSE_PRESET_SYNTAX},
};

TEST(IndexMappingParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<IndexMappingParser>(text, result);
    }
}

} // namespace
} // namespace morvane
