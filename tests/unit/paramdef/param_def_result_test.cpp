#include "paramdef/param_def_result.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct Row {
    std::int32_t code;
    const char* text;
};

constexpr Row rows[] = {
    {-1, "Internal error\n"}, {1, "Invalid parameter access type\n"},
    {2, "Syntax error\n"},    {-2, "Unknown error\n"},
    {3, "Unknown error\n"},   {1000, "Unknown error\n"},
};

TEST(ParamDefResult, HasAMessageForEveryCode) {
    for (const auto& [code, text] : rows)
        EXPECT_EQ(message(static_cast<ParamDefResult>(code)), text) << code;
}

} // namespace
} // namespace morvane
