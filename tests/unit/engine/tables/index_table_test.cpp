#include "engine/tables/index_table.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvane {
namespace {

constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
constexpr auto highest = std::numeric_limits<std::int32_t>::max();

struct SpanRow {
    const char* why;
    std::int32_t low;
    std::int32_t high;
    IndexValues values;
};

const SpanRow spanRows[] = {
    {"both ends belong to it", 0, 3, {"0", "1", "2", "3"}},
    {"one number", 5, 5, {"5"}},
    {"downwards", 3, 0, {}},
    {"around zero", -2, 1, {"-2", "-1", "0", "1"}},
    {"the greatest number", highest - 1, highest, {"2147483646", "2147483647"}},
    {"the lowest number", lowest, lowest + 1, {"-2147483648", "-2147483647"}},
    {"from the greatest to the lowest", highest, lowest, {}},
};

TEST(AppendNumbers, AppendsTheNumbersOfASpan) {
    for (const auto& [why, low, high, values] : spanRows) {
        SCOPED_TRACE(why);
        IndexValues appended{"first"};
        appendNumbers(low, high, appended);
        auto expected = values;
        expected.insert(expected.begin(), "first");
        EXPECT_EQ(appended, expected);
    }
}

} // namespace
} // namespace morvane
