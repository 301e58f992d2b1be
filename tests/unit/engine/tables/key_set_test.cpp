#include "engine/tables/key_set.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Keys = std::vector<std::string>;

Keys keysOf(const KeySet& set) {
    return {set.begin(), set.end()};
}

TEST(KeySet, HoldsEachKeyOnceInBytewiseOrder) {
    const KeySet keys({"gain[2]", "gain[10]", "b", "gain", "gain[2]", "B", "\xc3\xa4", "b"});
    const Keys expected{"B", "b", "gain", "gain[10]", "gain[2]", "\xc3\xa4"};
    EXPECT_EQ(keysOf(keys), expected);
    EXPECT_EQ(Keys(keys.keys().begin(), keys.keys().end()), expected);
    EXPECT_EQ(keys.size(), 6U);
    EXPECT_FALSE(keys.empty());
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

TEST(KeySet, EqualsASetOfTheSameKeys) {
    EXPECT_EQ(KeySet({"a", "b"}), KeySet({"b", "a", "b"}));
    EXPECT_NE(KeySet({"a", "b"}), KeySet({"a"}));
}

} // namespace
} // namespace morvane
