#include "paramdef/default_parser.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr test::AttributeRow rows[] = {
    {"a number", "{ 5 }@", "{ 5 }"},
    {"a number without blanks", "{-0x10}@", "{ -16 }"},
    {"a string", "{ \"auto\" }@", "{ \"auto\" }"},
    {"an empty string", "{ \"\" }@", "{ \"\" }"},
    {"an expression", "{ ( limit / 2 ) }@", "{ limit / 2 }"},
    {"a condition", "( mode == 2 ) { 0x3 }@", "[mode == 2] { 3 }"},
    {"a condition without blanks", "(mode){(a)}@", "[mode] { a }"},
    {"an empty condition", "( ) { 1 }@", "{ 1 }"},
};

TEST(DefaultParser, ReadsDefaultsOverLines) {
    test::expectAttributes<DefaultParser>(rows);
}

constexpr test::MistakeRow mistakes[] = {
    {"no brace", "@5 }"},
    {"no brace after a condition", "( a ) @5 }"},
    {"no value", "{ @}"},
    {"two values", "{ 5 @6 }"},
    {"a comma", "{ 5@, }"},
    {"a comma after a string", "{ \"a\" @, }"},
    {"a span", "{ 1@..2 }"},
    {"a name", "{ @auto }"},
    {"a mistake in an expression", "{ ( @= ) }"},
    {"a mistake in a condition", "( a @[ ) { 1 }"},
};

TEST(DefaultParser, RefusesMistakes) {
    test::expectSyntaxErrors<DefaultParser>(mistakes);
}

TEST(DefaultParser, KeepsThePlaceOfItsValue) {
    DefaultParser parser;
    test::readAttribute("(a) {\n \"one \n  two\"\n}",
                        [&](Cursor& line) { return parser.parse(line); });
    const auto value = parser.take();
    EXPECT_EQ(test::textOf(value, test::Places::shown), "[a@1:1] { \"one two\"@2:1 }");
}

} // namespace
} // namespace morvane
