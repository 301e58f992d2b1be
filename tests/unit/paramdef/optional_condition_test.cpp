#include "paramdef/optional_condition.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct Row {
    const char* why;
    const char* text; ///< "@" where reading stops, or at the caret
    ParamDefResult result;
    const char* condition;
};

constexpr Row rows[] = {
    {"none", "{@ 1 }", ParamDefResult::ok, ""},
    {"one", "( a == ( 1 ) ) {@ 1 }", ParamDefResult::ok, "a == ( 1 )"},
    {"an empty one", "( ) {@ }", ParamDefResult::ok, ""},
    {"an open one", "( a@", ParamDefResult::incomplete, "a"},
    {"no brace", "@x", ParamDefResult::syntaxError, ""},
    {"no brace after it", "( a ) @x", ParamDefResult::syntaxError, "a"},
    {"a mistake in it", "( a @= ) {", ParamDefResult::syntaxError, "a"},
};

TEST(OptionalCondition, EndsWithTheOpeningBrace) {
    for (const auto& [why, text, result, tokens] : rows) {
        for (const auto& layout : test::layoutsOf(text)) {
            SCOPED_TRACE(std::string(why) + ": " + layout);
            OptionalCondition reader;
            Expression condition;
            const auto reading = test::readAttribute(test::withoutMark(layout), [&](Cursor& line) {
                return reader.parse(line, condition);
            });
            EXPECT_EQ(reading.result, result);
            EXPECT_EQ(reading.stop, layout);
            EXPECT_EQ(test::textOf(condition.tokens), tokens);
        }
    }
}

TEST(OptionalCondition, StartsAgainBehindTheBrace) {
    OptionalCondition reader;
    for (const char* const text : {"(a) {", "{", "(b) {"}) {
        Expression condition;
        Cursor line({text, 1});
        EXPECT_EQ(reader.parse(line, condition), ParamDefResult::ok) << text;
    }
}

} // namespace
} // namespace morvane
