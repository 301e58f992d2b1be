#include "support/memory_limit.h"
#include "support/preset_records.h"
#include "tables/chosen_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace morvane {
namespace {

using Kind = IndexValueSet::Kind;
using test::nameSet;
using test::negated;
using test::numberSet;
using test::plain;
using test::rangeSet;

struct ChosenRow {
    const char* why;
    IndexSelector selector;
    std::optional<IndexValues> indexValues; ///< nothing if the index does not exist
    IndexValues chosen;                     ///< sorted
};

const IndexValues numbers{"0", "1", "2", "3"};
const IndexValues mixed{"10", "7", "07", "auto", "-1", "0x7", "99999999999", ""};

const ChosenRow chosenRows[] = {
    {"no values written: all of the index", plain("a"), numbers, numbers},
    {"no values written, index without values", plain("a"), IndexValues{}, {}},
    {"no values written, index missing", plain("a"), std::nullopt, {}},

    {"numbers", plain("a", numberSet({2, 0, 2})), numbers, {"0", "2", "2"}},
    {"numbers that the index does not have", plain("a", numberSet({99})), numbers, {"99"}},
    {"numbers, index missing", plain("a", numberSet({1})), std::nullopt, {"1"}},
    {"a number that is negative as a signed one",
     plain("a", numberSet({4294967295})),
     numbers,
     {"-1"}},
    {"the lowest number", plain("a", numberSet({2147483648})), numbers, {"-2147483648"}},

    {"ranges", plain("a", rangeSet({{2, 4}, {7, 7}})), numbers, {"2", "3", "4", "7"}},
    {"a range, index missing", plain("a", rangeSet({{1, 2}})), std::nullopt, {"1", "2"}},
    {"a range around zero", plain("a", rangeSet({{-1, 1}})), numbers, {"-1", "0", "1"}},
    {"a range up to the greatest number",
     plain("a", rangeSet({{2147483646, 2147483647}})),
     numbers,
     {"2147483646", "2147483647"}},
    {"ranges that overlap",
     plain("a", rangeSet({{3, 5}, {1, 4}, {2, 2}})),
     numbers,
     {"1", "2", "3", "4", "5"}},
    {"a range within a wide one, and one that only that overlaps",
     plain("a", rangeSet({{1, 9}, {2, 3}, {8, 10}})),
     numbers,
     {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}},
    {"ranges that touch", plain("a", rangeSet({{3, 4}, {1, 2}})), numbers, {"1", "2", "3", "4"}},

    {"names", plain("a", nameSet({"y", "x", "1"})), numbers, {"1", "x", "y"}},
    {"names, index missing", plain("a", nameSet({"x"})), std::nullopt, {"x"}},

    {"of mixed kinds the last counts: range",
     plain("a", {Kind::range, {"x"}, {1}, {{2, 3}}}),
     numbers,
     {"2", "3"}},
    {"of mixed kinds the last counts: number",
     plain("a", {Kind::number, {"x"}, {1}, {{2, 3}}}),
     numbers,
     {"1"}},
    {"of mixed kinds the last counts: name",
     plain("a", {Kind::name, {"x"}, {1}, {{2, 3}}}),
     numbers,
     {"x"}},

    {"not these numbers", negated("a", numberSet({1, 3, 99})), numbers, {"0", "2"}},
    {"not all the numbers", negated("a", numberSet({3, 2, 1, 0})), numbers, {}},
    {"not these numbers, index missing", negated("a", numberSet({1})), std::nullopt, {}},
    {"not a number: texts are compared",
     negated("a", numberSet({7})),
     mixed,
     {"", "-1", "0x7", "07", "10", "99999999999", "auto"}},
    {"not a number that is negative as a signed one",
     negated("a", numberSet({4294967295})),
     mixed,
     {"", "07", "0x7", "10", "7", "99999999999", "auto"}},

    {"not these ranges", negated("a", rangeSet({{0, 0}, {2, 9}})), numbers, {"1"}},
    {"not a range with all the values", negated("a", rangeSet({{0, 9}})), numbers, {}},
    {"not a range without any of the values", negated("a", rangeSet({{10, 19}})), numbers, numbers},
    {"not a range, index missing", negated("a", rangeSet({{0, 1}})), std::nullopt, {}},
    {"not a range: only decimal numbers lie in it",
     negated("a", rangeSet({{5, 10}})),
     mixed,
     {"", "-1", "0x7", "99999999999", "auto"}},
    {"not a range: a number beyond 32 bits is the greatest",
     negated("a", rangeSet({{-5, -1}, {2147483647, 2147483647}})),
     mixed,
     {"", "07", "0x7", "10", "7", "auto"}},

    {"not these names",
     negated("a", nameSet({"auto", "7", "x"})),
     mixed,
     {"", "-1", "07", "0x7", "10", "99999999999"}},
    {"not these names, index missing", negated("a", nameSet({"x"})), std::nullopt, {}},

    {"not, of mixed kinds the last counts: range",
     negated("a", {Kind::range, {"0"}, {1}, {{2, 3}}}),
     numbers,
     {"0", "1"}},
    {"not, of mixed kinds the last counts: number",
     negated("a", {Kind::number, {"0"}, {1}, {{2, 3}}}),
     numbers,
     {"0", "2", "3"}},
    {"not, of mixed kinds the last counts: name",
     negated("a", {Kind::name, {"0"}, {1}, {{2, 3}}}),
     numbers,
     {"1", "2", "3"}},
};

IndexValues sorted(IndexValues values) {
    std::sort(values.begin(), values.end());
    return values;
}

TEST(ChosenValues, AreTheValuesThatASelectorStandsFor) {
    for (const auto& [why, selector, indexValues, expected] : chosenRows) {
        SCOPED_TRACE(why);
        const ChosenValues chosen(selector, indexValues ? &*indexValues : nullptr);
        EXPECT_EQ(sorted(chosen.list()), sorted(expected));
        EXPECT_EQ(chosen.empty(), expected.empty());
        for (const auto& value : indexValues.value_or(mixed)) {
            const bool isChosen =
                std::find(expected.begin(), expected.end(), value) != expected.end();
            EXPECT_EQ(chosen.contains(value), isChosen) << value;
        }
        for (const auto& value : expected)
            EXPECT_TRUE(chosen.contains(value)) << value;
    }
}

TEST(ChosenValues, ContainTheTextsOfARangeAsTheyArePrinted) {
    const ChosenValues chosen(plain("a", rangeSet({{20, 30}, {0, 9}, {2, 3}, {-5, -3}})), nullptr);
    for (const auto* const value : {"0", "7", "9", "20", "25", "30", "-3", "-4", "-5"})
        EXPECT_TRUE(chosen.contains(value)) << value;
    for (const auto* const value :
         {"10", "19", "31", "-1", "-6", "07", "+7", " 7", "7 ", "7x", "x", "-0", "0x7", ""})
        EXPECT_FALSE(chosen.contains(value)) << value;
}

TEST(ChosenValues, UniteSeveralSets) {
    const IndexSelector selectors[] = {
        plain("a", rangeSet({{4, 6}})),           plain("a", numberSet({3, 1})),
        plain("a", nameSet({"1", "auto"})),       negated("a", numberSet({1, 2, 3})),
        plain("a", rangeSet({{5, 7}, {20, 21}})),
    };
    std::vector<ChosenValues> sets;
    for (const auto& selector : selectors)
        sets.emplace_back(selector, &numbers);
    std::vector<const ChosenValues*> pointers;
    EXPECT_TRUE(ChosenValues::united(pointers).empty());
    for (const auto& set : sets)
        pointers.push_back(&set);
    const auto united = ChosenValues::united(pointers);
    auto values = sorted(united.list());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    EXPECT_EQ(values, (IndexValues{"0", "1", "20", "21", "3", "4", "5", "6", "7", "auto"}));
    EXPECT_TRUE(united.contains("0"));
    EXPECT_FALSE(united.contains("2"));

    const ChosenValues all(plain("a"), &numbers);
    pointers = {&sets[2], &all};
    EXPECT_EQ(sorted(ChosenValues::united(pointers).list()),
              (IndexValues{"0", "1", "1", "2", "3", "auto"}));
    EXPECT_TRUE(ChosenValues::united(pointers).contains("2"));
}

TEST(ChosenValues, HaveAnOrder) {
    const ChosenValues sets[] = {
        ChosenValues(plain("a", nameSet({"x"})), nullptr),
        ChosenValues(plain("a", nameSet({"y"})), nullptr),
        ChosenValues(plain("a", rangeSet({{1, 2}})), nullptr),
        ChosenValues(plain("a", rangeSet({{1, 3}})), nullptr),
        ChosenValues(plain("a"), &numbers),
    };
    for (const auto& a : sets) {
        for (const auto& b : sets)
            EXPECT_EQ(a < b || b < a, &a != &b);
    }
}

TEST(ChosenValues, HoldAHugeRangeInLittleMemory) {
    const test::MemoryLimit limit(64U << 20U);
    const ChosenValues range(plain("a", rangeSet({{0, 2147483647}, {-2147483647 - 1, -1}})),
                             &numbers);
    EXPECT_TRUE(range.contains("2147483647"));
    EXPECT_TRUE(range.contains("-2147483648"));
    EXPECT_FALSE(range.contains("auto"));
    EXPECT_FALSE(range.empty());
    const ChosenValues others(negated("a", rangeSet({{1, 2147483647}})), &numbers);
    EXPECT_EQ(others.list(), IndexValues{"0"});
}

} // namespace
} // namespace morvane
