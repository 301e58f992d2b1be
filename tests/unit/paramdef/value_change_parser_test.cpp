#include "paramdef/value_change_parser.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr test::AttributeRow rows[] = {
    {"numbers", "{ 5 -> 6 }@", "\"5\" -> \"6\""},
    {"numbers without blanks", "{5->6}@", "\"5\" -> \"6\""},
    {"a number stays as it is written", "{ 0x5 -> +06 }@", "\"0x5\" -> \"+06\""},
    {"strings", "{ \"a~b\" -> \"-5\" }@", "\"a b\" -> \"-5\""},
    {"a number and a string", "{ 5 -> \"auto\" }@", "\"5\" -> \"auto\""},
    {"empty strings", "{ \"\" -> \"\" }@", "\"\" -> \"\""},
};

TEST(ValueChangeParser, ReadsBothSidesOverLines) {
    test::expectAttributes<ValueChangeParser>(rows);
}

constexpr test::MistakeRow mistakes[] = {
    {"no brace", "@5 -> 6 }"},
    {"nothing", "{ @}"},
    {"no left side", "{ @-> 6 }"},
    {"no right side", "{ 5 -> @}"},
    {"no arrow", "{ 5 @6 }"},
    {"half an arrow", "{ 5 @- 6 }"},
    {"an arrow with a blank in it", "{ 5 @-~> 6 }"},
    {"a negative number on the left", "{ @-5 -> 6 }"},
    {"a negative number on the right", "{ 5 -> @-6 }"},
    {"a name", "{ @auto -> 6 }"},
    {"a number with something after it", "{ 5@x -> 6 }"},
    {"an expression", "{ @( 5 ) -> 6 }"},
    {"three sides", "{ 5 -> 6 @-> 7 }"},
    {"a comma", "{ 5 -> 6@, }"},
};

TEST(ValueChangeParser, RefusesMistakes) {
    test::expectSyntaxErrors<ValueChangeParser>(mistakes);
}

TEST(ValueChangeParser, ReadsStringsOverLines) {
    ValueChangeParser parser;
    const auto reading = test::readAttribute("{ \"a \n  b\" -> \"\n\nc\nd\" }",
                                             [&](Cursor& line) { return parser.parse(line); });
    EXPECT_EQ(reading.result, ParamDefResult::ok);
    EXPECT_EQ(test::textOf(parser.take(), test::Places::shown), R"("a b"@1:2 -> "cd"@2:8)");
}

TEST(ValueChangeParser, KeepsThePlacesOfBothSides) {
    ValueChangeParser parser;
    test::readAttribute("{ 5\n ->\n  \"a\" }", [&](Cursor& line) { return parser.parse(line); });
    EXPECT_EQ(test::textOf(parser.take(), test::Places::shown), "\"5\"@1:2 -> \"a\"@3:2");
}

} // namespace
} // namespace morvane
