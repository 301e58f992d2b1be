#include "tables/key_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace morvane {
namespace {

using Keys = std::vector<std::string>;

Keys keysOf(const KeySet& set) {
    Keys keys;
    for (const auto key : set)
        keys.emplace_back(key.c_str());
    return keys;
}

TEST(KeySet, HoldsEachKeyOnceInBytewiseOrder) {
    const KeySet keys({"gain[2]", "gain[10]", "b", "gain", "gain[2]", "B", "\xc3\xa4", "b"});
    const Keys expected{"B", "b", "gain", "gain[10]", "gain[2]", "\xc3\xa4"};
    EXPECT_EQ(keysOf(keys), expected);
    EXPECT_EQ(keys.strings(), expected);
    for (std::size_t place = 0; place < expected.size(); ++place)
        EXPECT_EQ(keys[place].view(), expected[place]);
    EXPECT_EQ(keys.size(), 6U);
    EXPECT_FALSE(keys.empty());
}

TEST(KeySet, MergesTwoSortedRuns) {
    EXPECT_EQ(keysOf(KeySet({"a", "c", "e", "b", "c", "f"})), (Keys{"a", "b", "c", "e", "f"}));
    EXPECT_EQ(keysOf(KeySet({"b", "c", "a"})), (Keys{"a", "b", "c"}));
    EXPECT_EQ(keysOf(KeySet({"a", "b", "a", "b"})), (Keys{"a", "b"}));
}

TEST(KeySet, TakesEqualKeysWithinARunForOne) {
    EXPECT_EQ(keysOf(KeySet({"a", "a"})), Keys{"a"});
    EXPECT_EQ(keysOf(KeySet({"a", "e", "e", "b", "f"})), (Keys{"a", "b", "e", "f"}));
    EXPECT_EQ(keysOf(KeySet({"c", "a", "b", "b"})), (Keys{"a", "b", "c"}));
}

TEST(KeySet, FindsExactlyItsKeys) {
    const KeySet keys({"gain[2]", "gain", "mode"});
    for (const auto* const key : {"gain[2]", "gain", "mode"})
        EXPECT_TRUE(keys.contains(key)) << key;
    for (const auto* const key : {"", "gai", "gain[", "gain[2", "gain[2] ", "Gain", "gain[1]", "z"})
        EXPECT_FALSE(keys.contains(key)) << key;
}

TEST(KeySet, CanBeEmpty) {
    const KeySet keys;
    EXPECT_TRUE(keys.empty());
    EXPECT_EQ(keys.size(), 0U);
    EXPECT_EQ(keysOf(keys), Keys{});
    EXPECT_FALSE(keys.contains(""));
}

TEST(KeySet, KnowsWhetherItsKeysAreUtf8) {
    EXPECT_TRUE(KeySet().isUtf8());
    EXPECT_TRUE(KeySet({"a", "a[\xc3\xa4]"}).isUtf8());
    EXPECT_FALSE(KeySet({"a[\xff]", "b"}).isUtf8());
    EXPECT_FALSE(KeySet({"a", "b[\xc3"}).isUtf8());
}

TEST(KeySet, KnowsWhetherItsKeysAreCanonical) {
    EXPECT_TRUE(KeySet().isCanonical());
    for (const char* const key :
         {"a", "a[1]", "a[1][]", "a b [ 2 ][\xc3\xa4]", "a[\t]", "a\tb", "a[x\n]"})
        EXPECT_TRUE(KeySet({"b", key, "c[1]"}).isCanonical()) << key;
    for (const char* const key :
         {"", "[1]", "a]", "a[1", "a[1]x", "a[1]x[2]", "a[1]b]", "a[1]]", "a[1[2]", "a[[1]]",
          "a]b[1]", "a=b", "a[=]", "a[1]=", "a\t", "a\n", "a\v", "a\f", "a\r"})
        EXPECT_FALSE(KeySet({"b", key, "c[1]"}).isCanonical()) << key;
}

TEST(KeySet, EqualsASetOfTheSameKeys) {
    EXPECT_EQ(KeySet({"a", "b"}), KeySet({"b", "a", "b"}));
    EXPECT_NE(KeySet({"a", "b"}), KeySet({"a"}));
}

/// The keys of every second pair of a list: 0, 1, 4, 5, and so on.
KeySet setOfRuns(const Keys& keys) {
    auto texts = std::make_shared<KeyTexts>();
    for (const auto& key : keys)
        texts->list.append(key);
    KeySet set(texts);
    for (std::size_t i = 0; i < keys.size(); i += 4)
        set.append(i, std::min(i + 2, keys.size()));
    return set;
}

TEST(KeySet, MayBeRunsOfAList) {
    const Keys expected{"a", "b", "e", "f", "i"};
    const auto set = setOfRuns({"a", "b", "c", "d", "e", "f", "g", "h", "i"});
    EXPECT_EQ(set.size(), expected.size());
    EXPECT_EQ(keysOf(set), expected);
    EXPECT_EQ(set, KeySet(expected));
    EXPECT_NE(set, KeySet({"a", "b", "e", "f", "j"}));
    for (std::size_t place = 0; place < expected.size(); ++place)
        EXPECT_EQ(set[place].view(), expected[place]);
    for (const auto* const key : {"a", "b", "e", "f", "i"})
        EXPECT_TRUE(set.contains(key)) << key;
    for (const auto* const key : {"", "aa", "c", "d", "dd", "g", "h", "j"})
        EXPECT_FALSE(set.contains(key)) << key;
}

TEST(KeySet, TakesNeighbouringTextsAndNone) {
    auto texts = std::make_shared<KeyTexts>();
    for (const auto* const key : {"a", "b", "c", "d"})
        texts->list.append(key);
    KeySet set(texts);
    set.append(2, 2);
    EXPECT_TRUE(set.empty());
    set.append(0, 1);
    set.append(1, 3);
    set.append(3, 3);
    EXPECT_EQ(keysOf(set), (Keys{"a", "b", "c"}));
}

TEST(KeySet, KeepsItsTextsWhenItIsCopied) {
    KeySet copy;
    {
        const KeySet set({"a", "b"});
        copy = set;
    }
    EXPECT_EQ(keysOf(copy), (Keys{"a", "b"}));
}

using Place = std::optional<std::size_t>;

Keys manyKeys(std::size_t count) {
    Keys keys;
    for (std::size_t i = 0; i < count; ++i)
        keys.push_back("gain[" + std::to_string(1000 + i) + "]");
    return keys;
}

TEST(KeySearch, FindsKeysInTheOrderOfTheSetAndLeavesSomeOut) {
    const auto keys = manyKeys(100);
    const KeySet set(keys);
    for (std::size_t stride = 1; stride <= keys.size(); ++stride) {
        KeySearch search(set);
        for (std::size_t i = stride - 1; i < keys.size(); i += stride)
            EXPECT_EQ(search.find(keys[i]), Place(i)) << "every " << stride;
        EXPECT_EQ(search.find("z"), Place());
    }
}

TEST(KeySearch, FindsKeysInAnyOrder) {
    const auto keys = manyKeys(20);
    const KeySet set(keys);
    for (std::size_t first = 0; first < keys.size(); ++first) {
        for (std::size_t second = 0; second < keys.size(); ++second) {
            KeySearch search(set);
            EXPECT_EQ(search.find(keys[first]), Place(first));
            EXPECT_EQ(search.find(keys[second]), Place(second)) << first;
        }
    }
}

TEST(KeySearch, FindsKeysOfManyRuns) {
    const auto all = manyKeys(41);
    const auto set = setOfRuns(all);
    const auto keys = keysOf(set);
    for (std::size_t first = 0; first < keys.size(); ++first) {
        for (const auto& second : all) {
            const auto place = std::find(keys.begin(), keys.end(), second);
            const auto expected =
                place == keys.end() ? Place() : static_cast<std::size_t>(place - keys.begin());
            KeySearch search(set);
            EXPECT_EQ(search.find(keys[first]), Place(first));
            EXPECT_EQ(search.find(second), expected) << keys[first] << ", " << second;
            EXPECT_EQ(search.find(keys[first]), Place(first)) << second;
        }
    }
}

TEST(KeySearch, GoesOnBehindKeysThatAreNotThere) {
    const KeySet set({"b", "d", "f"});
    KeySearch search(set);
    for (const auto& [key, place] : std::vector<std::pair<const char*, Place>>{
             {"a", {}}, {"b", 0}, {"c", {}}, {"a", {}}, {"f", 2}, {"g", {}}, {"", {}}, {"d", 1}})
        EXPECT_EQ(search.find(key), place) << key;
    const KeySet nothing;
    EXPECT_EQ(KeySearch(nothing).find("a"), Place());
}

} // namespace
} // namespace morvane
