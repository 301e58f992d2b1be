#include "tables/key_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace morvane {
namespace {

using Texts = std::vector<std::string>;

struct ValueRow {
    const char* why;
    Texts values;
    Texts sorted;
    bool orderKeys;
};

const ValueRow valueRows[] = {
    {"none", {}, {}, true},
    {"numbers: the bracket is greater than a digit", {"1", "9", "10"}, {"10", "1", "9"}, true},
    {"letters: the bracket is less", {"ab", "b", "a"}, {"a", "ab", "b"}, true},
    {"a value twice", {"b", "a", "b"}, {"a", "b"}, true},
    {"no text", {"a", ""}, {"", "a"}, true},
    {"bytes beyond 127", {"\xff", "a\xff", "a"}, {"a", "a\xff", "\xff"}, true},
    {"a value with its bracket begins another", {"a]b", "a"}, {"a", "a]b"}, false},
    {"and stands before others that it begins",
     {"a]c", "b", "a", "a]b"},
     {"a", "a]b", "a]c", "b"},
     false},
    {"no text with its bracket does", {"]x", ""}, {"", "]x"}, false},
    {"a bracket at the end", {"a]", "a"}, {"a", "a]"}, false},
    {"a value begins another without its bracket",
     {"a[", "a^", "aZ", "a"},
     {"aZ", "a[", "a", "a^"},
     true},
};

TEST(SortedValues, AreInTheOrderOfTheirKeys) {
    for (const auto& [why, values, sorted, orderKeys] : valueRows) {
        SCOPED_TRACE(why);
        const SortedValues result(values);
        EXPECT_EQ(Texts(result.texts().begin(), result.texts().end()), sorted);
        EXPECT_EQ(result.orderKeys(), orderKeys);
        for (std::size_t place = 0; place < sorted.size(); ++place)
            EXPECT_EQ(result.find(sorted[place]), place);
        EXPECT_EQ(result.find("absent"), std::nullopt);
    }
}

TEST(ForEachKey, CombinesOneValueOfEachDimension) {
    const Texts numbers{"1", "10"};
    const Texts names{"x"};
    const SortedValues first(numbers);
    const SortedValues second(names);
    const std::vector<std::pair<Dimensions, Texts>> rows{
        {{}, {"p"}},
        {{&first}, {"p[10]", "p[1]"}},
        {{&second, &second}, {"p[x][x]"}},
        {{&first, &second, &first}, {"p[10][x][10]", "p[10][x][1]", "p[1][x][10]", "p[1][x][1]"}},
    };
    for (const auto& [dimensions, expected] : rows) {
        Texts keys;
        forEachKey("p", dimensions, [&](std::string_view key) { keys.emplace_back(key); });
        EXPECT_EQ(keys, expected);
        EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    }
}

std::string namesInKeyOrder(const ParameterMap& first, const ParameterMap& second) {
    std::string names;
    for (const auto& [map, place] : inKeyOrder(first, second))
        names += (names.empty() ? "" : " ") + std::string(map->name(place));
    return names;
}

TEST(InKeyOrder, AnIndexedParameterWaitsForOthersWithItsName) {
    EXPECT_EQ(namesInKeyOrder({}, {}), "");
    EXPECT_EQ(namesInKeyOrder({{"b", {}}}, {{"a", {}}, {"c", {}}}), "a b c");
    // "p" and "p1" are indexed: "p[" is greater than "p1[", that than "p12" and "p1A".
    EXPECT_EQ(namesInKeyOrder({{"p", {"i"}}, {"p12", {}}, {"p2", {"i"}}, {"q", {}}},
                              {{"p1", {"i"}}, {"p1A", {}}, {"p1a", {}}, {"pa", {"i"}}}),
              "p12 p1A p1 p1a p2 p pa q");
    EXPECT_EQ(namesInKeyOrder({{"p", {}}, {"p1", {}}, {"pa", {}}}, {}), "p p1 pa");
}

} // namespace
} // namespace morvane
