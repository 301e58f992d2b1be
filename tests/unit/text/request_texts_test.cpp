#include "text/request_texts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane {
namespace {

struct SizeRow {
    const char* why;
    std::vector<std::size_t> lengths;
    std::size_t size;
};

TEST(ArraySize, CountsTheBytesThatStringsTakeOnTheBus) {
    const SizeRow rows[] = {
        {"nothing", {}, 0},
        {"length, text and end", {5}, 4 + 5 + 1},
        {"no padding after the last", {0}, 4 + 1},
        {"padding between two", {2, 2}, 4 + 3 + 1 + 4 + 3},
        {"no padding where none is needed", {3, 3}, 4 + 4 + 4 + 4},
    };
    for (const auto& [why, lengths, size] : rows) {
        SCOPED_TRACE(why);
        ArraySize array;
        for (const auto length : lengths)
            array.add(std::string(length, 'x'));
        EXPECT_EQ(array.bytes(), size);
    }
}

TEST(ArraySize, FitsUpToTheLimitOfDBus) {
    constexpr std::size_t lengthAndEnd = 4 + 1;
    for (const std::size_t excess : {0U, 1U}) {
        ArraySize array;
        array.add(std::string(ArraySize::maximum - lengthAndEnd + excess, 'x'));
        EXPECT_EQ(array.fits(), excess == 0);
    }
}

} // namespace
} // namespace morvane
