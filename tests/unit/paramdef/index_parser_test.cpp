#include "paramdef/index_parser.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr test::AttributeRow rows[] = {
    {"a name", "{ input }@", "input"},
    {"a name without blanks", "{input}@", "input"},
    {"names", "{ 0 , 1,2 , input }@", "0 1 2 input"},
    {"a name twice", "{ a , a }@", "a a"},
    {"a name of any characters but those that end it", "{ a[1]{(\"# }@", "a[1]{(\"#"},
};

TEST(IndexParser, ReadsNamesOverLines) {
    test::expectAttributes<IndexParser>(rows);
}

constexpr test::MistakeRow mistakes[] = {
    {"no brace", "@input }"},          {"nothing", "{ @}"},
    {"a comma first", "{ @, input }"}, {"a comma last", "{ input , @}"},
    {"two commas", "{ a , @, b }"},    {"no comma", "{ a @b }"},
};

TEST(IndexParser, RefusesMistakes) {
    test::expectSyntaxErrors<IndexParser>(mistakes);
}

TEST(IndexParser, KeepsThePlacesOfItsNames) {
    IndexParser parser;
    test::readAttribute("{ a,\n  b }", [&](Cursor& line) { return parser.parse(line); });
    const auto dimension = parser.take();
    EXPECT_EQ(test::textOf(dimension, test::Places::shown), "a@1:2 b@2:2");
    EXPECT_EQ(dimension.indexName(), "a") << "the first one names the dimension";
}

} // namespace
} // namespace morvane
