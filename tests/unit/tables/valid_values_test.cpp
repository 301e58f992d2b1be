#include "paramdef/system_parameter.h"
#include "support/definition_text.h"
#include "support/memory_limit.h"
#include "tables/valid_values.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace morvane {

void PrintTo(const NumberSpan& span, std::ostream* out) {
    *out << span.low << ".." << span.high;
}

namespace {

using Values = std::vector<ValidValue>;

constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
constexpr auto highest = std::numeric_limits<std::int32_t>::max();

struct RangeRow {
    const char* why;
    std::string attributes;
    SystemArguments arguments;
    Values values;
};

const RangeRow rangeRows[] = {
    {"no attribute", "", {}, {}},
    {"no items", "rangeValid { }", {}, {}},
    {"a span", "rangeValid { 0..3 }", {}, {NumberSpan{0, 3}}},
    {"a single number", "rangeValid { 5 }", {}, {NumberSpan{5, 5}}},
    {"a text", "rangeValid { \"auto\" }", {}, {"auto"}},
    {"an empty text", "rangeValid { \"\" }", {}, {""}},
    {"a text that looks like a number", "rangeValid { \"07\" }", {}, {"07"}},
    {"items in file order with duplicates",
     R"(rangeValid { 5, "b", 1..2, "a", 5, })",
     {},
     {NumberSpan{5, 5}, "b", NumberSpan{1, 2}, "a", NumberSpan{5, 5}}},
    {"several attributes in file order",
     "rangeValid { 5 } rangeValid { } rangeValid { 1 }",
     {},
     {NumberSpan{5, 5}, NumberSpan{1, 1}}},
    {"other attributes give no value",
     "rangeDoc { 1 } default { 2 } valueChange { 3 -> 4 } ctrlRO (0)",
     {},
     {}},
    {"a number's prefix decides its base",
     "rangeValid { 0x10..021, -0x1 }",
     {},
     {NumberSpan{16, 17}, NumberSpan{-1, -1}}},
    {"the lowest and the greatest number",
     "rangeValid { -2147483648..2147483647 }",
     {},
     {NumberSpan{lowest, highest}}},
    {"numbers beyond 32 bits",
     "rangeValid { -99999999999..99999999999 }",
     {},
     {NumberSpan{lowest, highest}}},

    {"bounds that are computed",
     "rangeValid { (low + 1)..(2 * high) }",
     {{"low", "1"}, {"high", "0x2"}},
     {NumberSpan{2, 4}}},
    {"a single value that is computed", "rangeValid { (low) }", {{"low", "7"}}, {NumberSpan{7, 7}}},
    {"a text that is computed", "rangeValid { (name) }", {{"name", "x"}}, {"x"}},
    {"a concatenated text", "rangeValid { (name + 1) }", {{"name", "x"}}, {"x1"}},
    {"an empty argument is the number 0",
     "rangeValid { (name) }",
     {{"name", ""}},
     {NumberSpan{0, 0}}},
    {"a text at the low end stands as it is", "rangeValid { (name)..3 }", {{"name", "x"}}, {"x"}},
    {"a text at the high end leaves nothing", "rangeValid { 1..(name) }", {{"name", "x"}}, {}},
    {"a missing name leaves nothing",
     "rangeValid { (low), 1, 2..(low), (low)..3 }",
     {},
     {NumberSpan{1, 1}}},
    {"an empty expression leaves nothing", "rangeValid { ( ), 1 }", {}, {NumberSpan{1, 1}}},
    {"the names of parameters have no value here",
     "rangeValid { (self), (other), 1 }",
     {},
     {NumberSpan{1, 1}}},
    {"an argument may have the name of a parameter",
     "rangeValid { (other) }",
     {{"other", "4"}},
     {NumberSpan{4, 4}}},
    {"a division by zero leaves nothing", "rangeValid { (1 / 0), 1 }", {}, {NumberSpan{1, 1}}},

    {"a condition that holds", "rangeValid (mode == 2) { 1 }", {{"mode", "2"}}, {NumberSpan{1, 1}}},
    {"a condition that does not hold", "rangeValid (mode == 2) { 1 }", {{"mode", "3"}}, {}},
    {"a condition that cannot be evaluated", "rangeValid (mode == 2) { 1 }", {}, {}},
    {"an empty condition", "rangeValid ( ) { 1 }", {}, {NumberSpan{1, 1}}},
    {"a condition that names a parameter",
     "rangeValid (other == 2) { 1 }",
     {{"other", "3"}},
     {NumberSpan{1, 1}}},
    {"each attribute has a condition of its own",
     "rangeValid (mode == 1) { 1 } rangeValid (mode == 2) { 2 } rangeValid { 3 }"
     " rangeValid (mode != 1) { 4 }",
     {{"mode", "2"}},
     {NumberSpan{2, 2}, NumberSpan{3, 3}, NumberSpan{4, 4}}},
};

Values valuesOf(const std::string& attributes, const SystemArguments& arguments) {
    const auto parameters = test::parametersOf("self index { " + attributes + " }\nother rw { }\n");
    return validValues(*parameters.find("self"), parameters, arguments);
}

TEST(ValidValues, AreTheItemsWhoseConditionHolds) {
    for (const auto& [why, attributes, arguments, values] : rangeRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(valuesOf(attributes, arguments), values);
    }
}

TEST(ValidValues, KeepASpanDownwards) {
    const auto values = valuesOf("rangeValid { 3..0 }", {});
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(std::get<NumberSpan>(values[0]), (NumberSpan{3, 0})) << "it has no number";
}

TEST(ValidValues, TakeNoMemoryForTheNumbersOfASpan) {
    const test::MemoryLimit limit(64U << 20U);
    EXPECT_EQ(valuesOf("rangeValid { 0..2147483647 }", {}), (Values{NumberSpan{0, highest}}));
}

struct ItemRow {
    const char* why;
    ValidValue item;
    const char* value;
    bool stands;
};

const ItemRow itemRows[] = {
    {"a text", "auto", "auto", true},
    {"another text", "auto", "Auto", false},
    {"a text that looks like a number", "16", "0x10", false},
    {"the first of a span", NumberSpan{-2, 20}, "-2", true},
    {"the last of a span", NumberSpan{-2, 20}, "20", true},
    {"below a span", NumberSpan{-2, 20}, "-3", false},
    {"above a span", NumberSpan{-2, 20}, "21", false},
    {"hexadecimal", NumberSpan{-2, 20}, "0x10", true},
    {"octal", NumberSpan{-2, 20}, "024", true},
    {"octal above", NumberSpan{-2, 20}, "025", false},
    {"more than a number", NumberSpan{-2, 20}, "1x", false},
    {"nothing, which is not 0", NumberSpan{-2, 20}, "", false},
    {"a descending span", NumberSpan{3, 0}, "2", false},
};

TEST(ValidValues, StandForTheValuesOfPresetDataFiles) {
    for (const auto& [why, item, value, stands] : itemRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(standsFor(item, value), stands);
    }
}

AcceptedValues acceptedOf(const std::string& attributes) {
    const auto parameters = test::parametersOf("self rw { " + attributes + " }\n");
    return acceptedValues(*parameters.find("self"), parameters, {});
}

TEST(AcceptedValues, AreThoseOfAnyItem) {
    const auto accepted = acceptedOf("rangeValid { 1..3, \"auto\" } rangeValid (0) { 9 }");
    EXPECT_TRUE(accepted.accepts("0x2"));
    EXPECT_TRUE(accepted.accepts("auto"));
    EXPECT_FALSE(accepted.accepts("4"));
    EXPECT_FALSE(accepted.accepts("9"));
}

TEST(AcceptedValues, AreAllWithoutRanges) {
    EXPECT_TRUE(acceptedOf("").accepts("anything"));
    EXPECT_FALSE(acceptedOf("rangeValid (0) { 1 }").accepts("1")) << "a range that does not hold";
}

} // namespace
} // namespace morvane
