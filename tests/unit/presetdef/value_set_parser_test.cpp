#include "presetdef/value_set_parser.h"
#include "support/construct_reading.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvane {
namespace {

using enum PresetParseResult;
using Kind = IndexValueSet::Kind;
using test::nameSet;
using test::numberSet;
using test::rangeSet;

constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
constexpr auto highest = std::numeric_limits<std::int32_t>::max();
constexpr auto highestUnsigned = std::numeric_limits<std::uint32_t>::max();

struct SetRow {
    const char* why;
    std::string_view text;
    IndexValueSet set;
};

const SetRow setRows[] = {
    {"one number", "{ 1 }@", numberSet({1})},
    {"no blanks, and more on the line", "{1}@}", numberSet({1})},
    {"numbers in file order with duplicates", "{ 3 , 1 , 3 }@", numberSet({3, 1, 3})},
    {"zero", "{0}@", numberSet({0})},
    {"a leading zero is ignored", "{010}@", numberSet({10})},
    {"the greatest number", "{4294967295}@", numberSet({highestUnsigned})},
    {"a number beyond 32 bits", "{4294967296}@", numberSet({highestUnsigned})},
    {"a number beyond 64 bits", "{99999999999999999999999}@", numberSet({highestUnsigned})},

    {"a range", "{1..2}@", rangeSet({{1, 2}})},
    {"a range with blanks", "{2 .. 5}@", rangeSet({{2, 5}})},
    {"a range of one number", "{5..5}@", rangeSet({{5, 5}})},
    {"ranges in file order", "{ 4..7 , 0..2 , 4..7 }@", rangeSet({{4, 7}, {0, 2}, {4, 7}})},
    {"the widest range of positive numbers", "{0..2147483647}@", rangeSet({{0, highest}})},
    {"the greatest number twice", "{2147483647..2147483647}@", rangeSet({{highest, highest}})},
    {"an end that is negative as a signed number", "{4294967295..0}@", rangeSet({{-1, 0}})},
    {"the lowest number", "{2147483648..0}@", rangeSet({{lowest, 0}})},
    {"two ends that are negative", "{2147483648..4294967295}@", rangeSet({{lowest, -1}})},
    {"an end beyond 32 bits", "{99999999999..5}@", rangeSet({{-1, 5}})},
    {"two ends beyond 32 bits", "{99999999999..4294967296}@", rangeSet({{-1, -1}})},

    {"a name", "{ main }@", nameSet({"main"})},
    {"names in file order with duplicates", "{ b , a , b }@", nameSet({"b", "a", "b"})},
    {"a name begins with any byte but a digit", "{-1}@", nameSet({"-1"})},
    {"a name that begins with dots", "{..5}@", nameSet({"..5"})},
    {"a name with dots", "{a..b}@", nameSet({"a..b"})},
    {"a name with digits", "{a1}@", nameSet({"a1"})},
    {"a name with an opening brace", "{ a{b }@", nameSet({"a{b"})},
    {"a name that is an opening brace", "{ { }@", nameSet({"{"})},
    {"quotes are bytes of the name", R"({"a"}@)", nameSet({R"("a")"})},
    {"bytes above 127", "{\xc3\xa4\xff}@", nameSet({"\xc3\xa4\xff"})},
    {"keywords of other constructs", "{ not , none , all }@", nameSet({"not", "none", "all"})},

    {"the kind is that of the last element: range", "{3, 1..2}@", {Kind::range, {}, {3}, {{1, 2}}}},
    {"the kind is that of the last element: number",
     "{1..2, 3}@",
     {Kind::number, {}, {3}, {{1, 2}}}},
    {"the kind is that of the last element: name", "{1, a}@", {Kind::name, {"a"}, {1}, {}}},
    {"all three kinds, name last",
     "{1, a, 2..3, 4, b}@",
     {Kind::name, {"a", "b"}, {1, 4}, {{2, 3}}}},
    {"all three kinds, number last", "{a, 2 .. 3, 1}@", {Kind::number, {"a"}, {1}, {{2, 3}}}},
    {"all three kinds, range last", "{a, 1, 2 .. 3}@", {Kind::range, {"a"}, {1}, {{2, 3}}}},
};

TEST(ValueSetParser, ReadsNumbersRangesAndNames) {
    for (const auto& [why, text, set] : setRows) {
        SCOPED_TRACE(why);
        test::expectReads<ValueSetParser>(text, set);
    }
}

struct RefusedRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
};

constexpr RefusedRow refusedRows[] = {
    {"a number instead of the brace", " @1}", PARSE_PRESET_SYNTAX},
    {"a name instead of the brace", " @a}", PARSE_PRESET_SYNTAX},
    {"a closing brace instead of the brace", " @}", PARSE_PRESET_SYNTAX},
    {"a comma instead of the brace", " @,", PARSE_PRESET_SYNTAX},

    {"an empty set", "{ @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a leading comma", "{ @, 1}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"a comma before the end", "{ 1, @}", PARSE_PRESET_MISSING_IDENTIFIER},
    {"two commas", "{ a, @, b}", PARSE_PRESET_MISSING_IDENTIFIER},

    {"a number after a number", "{1 @2}", PARSE_PRESET_SYNTAX},
    {"a name after a number", "{1 @a}", PARSE_PRESET_SYNTAX},
    {"letters right after a number", "{0@x10}", PARSE_PRESET_SYNTAX},
    {"a single dot", "{1@.5}", PARSE_PRESET_SYNTAX},
    {"two dots with a blank between them", "{1 @. .5}", PARSE_PRESET_SYNTAX},
    {"an opening brace after a number", "{1 @{2}", PARSE_PRESET_SYNTAX},
    {"an equals sign after a number", "{1 @= 2}", PARSE_PRESET_SYNTAX},

    {"a name as the high end", "{1..@a}", PARSE_PRESET_SYNTAX},
    {"no high end", "{1.. @}", PARSE_PRESET_SYNTAX},
    {"a comma as the high end", "{1.. @, 2}", PARSE_PRESET_SYNTAX},
    {"a brace as the high end", "{1.. @{", PARSE_PRESET_SYNTAX},
    {"a third dot", "{1..@.5}", PARSE_PRESET_SYNTAX},
    {"a sign at the high end", "{1..@-5}", PARSE_PRESET_SYNTAX},

    {"a descending range", "{5..2@}", PARSE_PRESET_INVALID_RANGE},
    {"a descending range with blanks", "{ 1..2, 5 .. 2@ }", PARSE_PRESET_INVALID_RANGE},
    {"a high end that is negative as a signed number", "{0..4294967295@}",
     PARSE_PRESET_INVALID_RANGE},
    {"a high end that is the lowest number", "{2147483647..2147483648@}",
     PARSE_PRESET_INVALID_RANGE},
    {"a high end beyond 32 bits", "{5..99999999999@}", PARSE_PRESET_INVALID_RANGE},
    {"a descending range of two negative ends", "{4294967295..4294967294@}",
     PARSE_PRESET_INVALID_RANGE},

    {"a range after a range", "{1..2@..3}", PARSE_PRESET_SYNTAX},
    {"a number after a range", "{1..2 @3}", PARSE_PRESET_SYNTAX},
    {"a brace after a range", "{1..2 @{", PARSE_PRESET_SYNTAX},
    {"a name after a name", "{a @b}", PARSE_PRESET_SYNTAX},
    {"a brace after a name", "{a @{}", PARSE_PRESET_SYNTAX},
    {"dots after a name", "{a @..5}", PARSE_PRESET_SYNTAX},
};

TEST(ValueSetParser, StopsAtTheMistake) {
    for (const auto& [why, text, result] : refusedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<ValueSetParser>(text, result);
    }
}

constexpr RefusedRow unfinishedRows[] = {
    {"before the brace", " @", PARSE_PRESET_CONTINUE},
    {"after the brace", "{ @", PARSE_PRESET_CONTINUE},
    {"after a number", "{ 1@", PARSE_PRESET_CONTINUE},
    {"after the dots", "{ 1..@", PARSE_PRESET_CONTINUE},
    {"after a range", "{ 1..2@", PARSE_PRESET_CONTINUE},
    {"after a name", "{ a@", PARSE_PRESET_CONTINUE},
    {"after a comma", "{ a, @", PARSE_PRESET_CONTINUE},
};

TEST(ValueSetParser, WaitsForTheRestOfTheSet) {
    for (const auto& [why, text, result] : unfinishedRows) {
        SCOPED_TRACE(why);
        test::expectRefuses<ValueSetParser>(text, result);
    }
}

} // namespace
} // namespace morvane
