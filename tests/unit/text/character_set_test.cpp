#include "text/character_set.h"

#include <gtest/gtest.h>

#include <string_view>

namespace morvane {
namespace {

TEST(CharacterSet, HasTheCharactersOfTheLiteral) {
    constexpr CharacterSet set("{,\xff}");
    constexpr std::string_view inside = "{,\xff}";
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        EXPECT_EQ(set.contains(c), inside.find(c) != std::string_view::npos) << code;
    }
}

TEST(CharacterSet, CanBeEmpty) {
    constexpr CharacterSet set("");
    for (int code = 0; code < 256; ++code)
        EXPECT_FALSE(set.contains(static_cast<char>(code))) << code;
}

} // namespace
} // namespace morvane
