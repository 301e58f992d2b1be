#include "paramdef/system_arguments.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct Row {
    const char* argument;
    bool accepted;
    SystemArguments arguments;
};

const Row rows[] = {
    {"name=value", true, {{"name", "value"}}},
    {"name=", true, {{"name", ""}}},
    {"a=b=c", true, {{"a", "b=c"}}},
    {"=v", true, {{"", "v"}}},
    {"=", true, {{"", ""}}},
    {" a = b ", true, {{" a ", " b "}}},
    {"name", false, {}},
    {"", false, {}},
};

TEST(SystemArguments, SplitsAnArgumentAtItsFirstEqualsSign) {
    for (const auto& [argument, accepted, expected] : rows) {
        SystemArguments arguments;
        EXPECT_EQ(addSystemArgument(arguments, argument), accepted) << argument;
        EXPECT_EQ(arguments, expected) << argument;
    }
}

TEST(SystemArguments, KeepsTheFirstValueOfAName) {
    SystemArguments arguments;
    EXPECT_TRUE(addSystemArgument(arguments, "a=1"));
    EXPECT_TRUE(addSystemArgument(arguments, "a=2"));
    EXPECT_TRUE(addSystemArgument(arguments, "a="));
    EXPECT_EQ(arguments, (SystemArguments{{"a", "1"}}));
}

} // namespace
} // namespace morvane
