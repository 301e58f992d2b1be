#include "paramdef/bare_number.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

struct Row {
    const char* text; ///< "@" behind the number, or at the caret of a mistake
    CharacterSet delimiters;
    ParamDefResult result;
    const char* number;
};

constexpr auto ok = ParamDefResult::ok;
constexpr auto syntax = ParamDefResult::syntaxError;

constexpr Row rows[] = {
    {"5@ }", "", ok, "5"},
    {"-0x1f@}", ",}", ok, "-31"},
    {"010@,", ",}", ok, "8"},
    {"5@..7", ".", ok, "5"},
    {"99999999999@", "", ok, "2147483647"},
    {"5@..7", ",}", syntax, ""},
    {"5@x", "", syntax, ""},
    {"0@9", "", syntax, ""},
    {"@x", "", syntax, ""},
    {"@-", "", syntax, ""},
    {"@}", "}", syntax, ""},
    {"@", "}", syntax, ""},
};

TEST(BareNumber, TakesAWholeWord) {
    for (const auto& [text, delimiters, result, number] : rows) {
        SCOPED_TRACE(text);
        const auto source = test::withoutMark(text);
        Token token;
        Cursor line({source, 3});
        EXPECT_EQ(readBareNumber(line, delimiters, token), result);
        const auto stop = result == ok ? line.column() : line.tokenColumn();
        EXPECT_EQ(std::string(source).insert(stop, "@"), text);
        if (result != ok)
            continue;
        EXPECT_EQ(test::textOf({token}, test::Places::shown), std::string(number) + "@3:0");
    }
}

} // namespace
} // namespace morvane
