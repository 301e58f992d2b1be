#include "paramdef/range_parser.h"
#include "support/parameter_text.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr test::AttributeRow rows[] = {
    {"nothing", "{ }@", "{  }"},
    {"a number", "{ 5 }@", "{ 5 }"},
    {"numbers in three bases, with a sign", "{ -5 , +6 , 0x10 , -0x10 , 010 }@",
     "{ -5, 6, 16, -16, 8 }"},
    {"numbers beyond 32 bits", "{ 2147483648 , -9999999999 }@", "{ 2147483647, -2147483648 }"},
    {"a string", "{ \"auto\" }@", "{ \"auto\" }"},
    {"an empty string", "{ \"\" }@", "{ \"\" }"},
    {"a string with characters that end an item", "{ \"a,b..c}~#\" }@", "{ \"a,b..c} #\" }"},
    {"a span", "{ 0 .. 7 }@", "{ 0..7 }"},
    {"a span without blanks", "{0..7}@", "{ 0..7 }"},
    {"a negative span", "{ -60..-12 }@", "{ -60..-12 }"},
    {"items without blanks", "{0..7,10,\"auto\"}@", "{ 0..7, 10, \"auto\" }"},
    {"a comma after the last item", "{ 1..5 , }@", "{ 1..5 }"},
    {"an expression", "{ ( limit - 1 ) }@", "{ limit - 1 }"},
    {"a span of expressions", "{ ( a ) .. ( ( b + 1 ) * 2 ) , 7 }@", "{ a..( b + 1 ) * 2, 7 }"},
    {"a span up to an expression", "{ 0..(limit-1) }@", "{ 0..limit - 1 }"},
    {"a minus that is a sign in an expression", "{ ( -5 ) }@", "{ -5 }"},
    {"an expression with characters that end an item", "{ ( \"a}\" + b , c } ) }@",
     "{ \"a}\" + b , c } }"},
    {"an empty expression", "{ ( ) }@", "{  }"},
    {"a span to an empty expression is a single value", "{ 1..() }@", "{ 1 }"},
    {"a condition", "( mode == 2 ) { 1 }@", "[mode == 2] { 1 }"},
    {"an empty condition", "( ) { 1 }@", "{ 1 }"},
    {"a condition without blanks", "(mode){1}@", "[mode] { 1 }"},
};

TEST(RangeParser, ReadsRangesOverLines) {
    test::expectAttributes<RangeParser>(rows);
}

constexpr test::MistakeRow mistakes[] = {
    {"no brace", "@5 }"},
    {"no brace after a condition", "( a ) @5 }"},
    {"two conditions", "( a ) @( b ) { }"},
    {"a comma first", "{ @, 5 }"},
    {"two commas", "{ 5 , @, 6 }"},
    {"no comma", "{ 5 @6 }"},
    {"no comma after a string", "{ \"a\" @\"b\" }"},
    {"a name", "{ @auto }"},
    {"a number with something after it", "{ 5@x }"},
    {"a digit that the base does not have", "{ 0@8 }"},
    {"a fraction", "{ 1@.5 }"},
    {"one dot", "{ 1 @. 5 }"},
    {"three dots", "{ 1..@.5 }"},
    {"dots with a blank between them", "{ 1 @.~. 5 }"},
    {"no low bound", "{ @.. 5 }"},
    {"no high bound", "{ 1 .. @}"},
    {"a comma for a high bound", "{ 1 .. @, }"},
    {"a string for a high bound", "{ 1 .. @\"5\" }"},
    {"a fraction for a high bound", "{ 1 .. 5@.5 }"},
    {"a span from a string", "{ \"a\" @.. 5 }"},
    {"a span of a span", "{ 1 .. 5@..7 }"},
    {"a span from an expression to nothing", "{ ( a ) .. @}"},
    {"a mistake in a condition", "( a @! ) { }"},
    {"a mistake in an expression", "{ ( a @= ) }"},
    {"a mistake in a high expression", "{ 1 .. ( @[ ) }"},
};

TEST(RangeParser, RefusesMistakes) {
    test::expectSyntaxErrors<RangeParser>(mistakes);
}

TEST(RangeParser, KeepsThePlacesOfItsTokens) {
    RangeParser parser;
    test::readAttribute("(a)\n { 5..\n6, \"x\n y\" }",
                        [&](Cursor& line) { return parser.parse(line); });
    const auto range = parser.take();
    EXPECT_EQ(test::textOf(range, test::Places::shown), "[a@1:1] { 5@2:3..6@3:0, \"xy\"@3:3 }");
}

} // namespace
} // namespace morvane
