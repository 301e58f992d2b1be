#include "paramdef/system_parameter.h"
#include "support/definition_text.h"
#include "support/memory_limit.h"
#include "tables/device_tables.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace morvane {
namespace {

struct IndexRow {
    const char* why;
    std::string definitions;
    SystemArguments arguments;
    IndexTable table;
};

const IndexRow indexRows[] = {
    {"nothing defined", "", {}, {}},
    {"a span", "a index { rangeValid { 0..3 } }", {}, {{"a", {"0", "1", "2", "3"}}}},
    {"a descending span", "a index { rangeValid { 3..0 } }", {}, {{"a", {}}}},
    {"a single number", "a index { rangeValid { 5 } }", {}, {{"a", {"5"}}}},
    {"a text", "a index { rangeValid { \"auto\" } }", {}, {{"a", {"auto"}}}},
    {"no values at all", "a index { }", {}, {{"a", {}}}},
    {"the documented range gives none", "a index { rangeDoc { 0..3 } }", {}, {{"a", {}}}},
    {"items and attributes in file order with duplicates",
     R"(a index { rangeValid { 9, "z", 0..1 } rangeValid { 9, "a" } })",
     {},
     {{"a", {"9", "z", "0", "1", "9", "a"}}}},
    {"negative numbers and other bases",
     "a index { rangeValid { -1..0x1 } }",
     {},
     {{"a", {"-1", "0", "1"}}}},
    {"a span up to the greatest number",
     "a index { rangeValid { 2147483646..2147483647 } }",
     {},
     {{"a", {"2147483646", "2147483647"}}}},
    {"bounds that depend on the device",
     "a index { rangeValid { 1..(inputs) } rangeValid (inputs > 1) { \"mix\" } }",
     {{"inputs", "2"}},
     {{"a", {"1", "2", "mix"}}}},
    {"the same on a smaller device",
     "a index { rangeValid { 1..(inputs) } rangeValid (inputs > 1) { \"mix\" } }",
     {{"inputs", "1"}},
     {{"a", {"1"}}}},
    {"an item that cannot be computed is left out",
     "a index { rangeValid { (inputs), 7, 1..(inputs) } }",
     {},
     {{"a", {"7"}}}},
    {"only indices, in name order",
     "b index { rangeValid { 1 } } p rw { rangeValid { 1 } } q ro { } a index { rangeValid { 2 } }"
     " r rostrict { } s wo { }",
     {},
     {{"a", {"2"}}, {"b", {"1"}}}},
    {"an index that this device does not have",
     "a index { ctrlValid (model == 1) rangeValid { 1 } } b index { ctrlValid (model == 2) "
     "rangeValid { 2 } }",
     {{"model", "2"}},
     {{"b", {"2"}}}},
    {"every condition must hold",
     "a index { ctrlValid (1) ctrlValid (0) } b index { ctrlValid (1) ctrlValid (1) }",
     {},
     {{"b", {}}}},
    {"a condition on a parameter counts as met",
     "a index { ctrlValid (p == 1) rangeValid (b == 1) { 1 } } b index { } p rw { }",
     {{"p", "0"}, {"b", "0"}},
     {{"a", {"1"}}, {"b", {}}}},
    {"only the validity conditions count",
     "p ro { } a index { ctrlRO (1) rangeValid { 1 } }",
     {},
     {{"a", {"1"}}}},
    {"a definition in two blocks with a new access type",
     "a rw { rangeValid { 1 } } a index { rangeValid { 2 } }",
     {},
     {{"a", {"1", "2"}}}},
};

TEST(IndexTable, HoldsTheValuesOfEveryIndexOfTheDevice) {
    for (const auto& [why, definitions, arguments, table] : indexRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(PresetGenerate::indexTable(test::parametersOf(definitions), arguments), table);
    }
}

TEST(IndexTable, TakesNoMemoryForASpanThatHasNoNumber) {
    const auto parameters =
        test::parametersOf("a index { rangeValid { 2147483647..-2147483648 } }\n"
                           "b index { ctrlValid (0) rangeValid { 0..2147483647 } }\n"
                           "c index { rangeValid (0) { 0..2147483647 } }\n"
                           "d rw { rangeValid { 0..2147483647 } }\n");
    const test::MemoryLimit limit(64U << 20U);
    EXPECT_EQ(PresetGenerate::indexTable(parameters, {}), (IndexTable{{"a", {}}, {"c", {}}}));
}

constexpr std::string_view parameterText =
    "input index { rangeValid { 0..3 } }\n"
    "output index { ctrlValid (0) rangeValid { 0..3 } }\n"
    "version ro { }\n"
    "status rostrict { index { input } }\n"
    "reset wo { index { input } }\n"
    "gain rw { index { output } index { input } }\n"
    "mode rw { ctrlRO (1) }\n"
    "wide rw { index { input, output } index { unknown } }\n"
    "old ro { ctrlValid (model == 1) }\n"
    "oldreset wo { ctrlValid (model == 1) }\n"
    "oldmode rw { index { input } ctrlValid (model == 1) ctrlValid (1) }\n"
    "guarded rw { ctrlValid (mode == 1) }\n"
    "strange rw { ctrlValid (missing) }\n"
    "none rw { ctrlValid ( ) }\n"
    "p ro { }\n"
    "p rw { index { input } }\n";

struct MapRow {
    const char* why;
    AccessSelector selector;
    const char* model;
    ParameterMap map;
};

const MapRow mapRows[] = {
    {"read-only ones of model 1",
     AccessSelector::readOnly,
     "1",
     {{"old", {}}, {"status", {"input"}}, {"version", {}}}},
    {"read-only ones of model 2",
     AccessSelector::readOnly,
     "2",
     {{"status", {"input"}}, {"version", {}}}},
    {"write-only ones of model 1",
     AccessSelector::writeOnly,
     "1",
     {{"oldreset", {}}, {"reset", {"input"}}}},
    {"write-only ones of model 2", AccessSelector::writeOnly, "2", {{"reset", {"input"}}}},
    {"read-write ones of model 1",
     AccessSelector::readWrite,
     "1",
     {{"gain", {"output", "input"}},
      {"guarded", {}},
      {"mode", {}},
      {"none", {}},
      {"oldmode", {"input"}},
      {"p", {"input"}},
      {"wide", {"input", "unknown"}}}},
    {"read-write ones of model 2",
     AccessSelector::readWrite,
     "2",
     {{"gain", {"output", "input"}},
      {"guarded", {}},
      {"mode", {}},
      {"none", {}},
      {"p", {"input"}},
      {"wide", {"input", "unknown"}}}},
};

TEST(ParameterMap, HoldsTheParametersOfTheDeviceByAccessType) {
    const auto parameters = test::parametersOf(parameterText);
    for (const auto& [why, selector, model, map] : mapRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(PresetGenerate::parameterMap(parameters, {{"model", model}}, selector), map);
    }
}

TEST(ParameterMap, FindsParametersAndTheirIndices) {
    const ParameterMap map{
        {"gain", {"output", "input"}}, {"level", {"input"}}, {"mode", {}}, {"tone", {"input"}}};
    EXPECT_EQ(map.size(), 4U);
    for (std::size_t place = 0; place < map.size(); ++place)
        EXPECT_EQ(map.find(map.name(place)), place);
    for (const auto* const name : {"", "gai", "gain1", "gain[1]", "zone"})
        EXPECT_EQ(map.find(name), std::nullopt) << name;
    EXPECT_EQ(map.indexNames(0), (IndexNames{"output", "input"}));
    EXPECT_EQ(map.indexNames(2), IndexNames{});
    EXPECT_EQ(ParameterMap().find("gain"), std::nullopt);
}

using Groups = std::vector<ParameterMap::Group>;

Groups groupsWith(const ParameterMap& map, std::string_view indexName) {
    const auto groups = map.groupsWith(indexName);
    return {groups.begin(), groups.end()};
}

TEST(ParameterMap, GroupsParametersWithTheSameIndices) {
    const ParameterMap map{
        {"gain", {"output", "input"}}, {"level", {"input"}}, {"mode", {}},
        {"pair", {"input", "input"}},  {"tone", {"input"}},  {"way", {"input", "output"}}};
    Groups groups;
    for (std::size_t place = 0; place < map.size(); ++place)
        groups.push_back(map.group(place));
    EXPECT_EQ(groups, (Groups{0, 1, 2, 3, 1, 4}));
    EXPECT_EQ(map.groups().size(), 5U);
    EXPECT_EQ(groupsWith(map, "input"), (Groups{0, 1, 3, 4}));
    EXPECT_EQ(groupsWith(map, "output"), (Groups{0, 4}));
    EXPECT_EQ(groupsWith(map, "unknown"), Groups{});
}

TEST(AccessSelector, HasTheNumbersOfTheParameterMaps) {
    EXPECT_EQ(static_cast<int>(AccessSelector::readOnly), 0);
    EXPECT_EQ(static_cast<int>(AccessSelector::writeOnly), 1);
    EXPECT_EQ(static_cast<int>(AccessSelector::readWrite), 2);
}

constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
constexpr auto highest = std::numeric_limits<std::int32_t>::max();

struct SpanRow {
    const char* why;
    std::int32_t low;
    std::int32_t high;
    IndexValues values;
};

const SpanRow spanRows[] = {
    {"both ends belong to it", 0, 3, {"0", "1", "2", "3"}},
    {"one number", 5, 5, {"5"}},
    {"descending", 3, 0, {}},
    {"around zero", -2, 1, {"-2", "-1", "0", "1"}},
    {"the greatest number", highest - 1, highest, {"2147483646", "2147483647"}},
    {"the lowest number", lowest, lowest + 1, {"-2147483648", "-2147483647"}},
    {"from the greatest to the lowest", highest, lowest, {}},
};

TEST(AppendNumbers, AppendsTheNumbersOfASpan) {
    for (const auto& [why, low, high, values] : spanRows) {
        SCOPED_TRACE(why);
        IndexValues appended{"first"};
        appendNumbers(low, high, appended);
        auto expected = values;
        expected.insert(expected.begin(), "first");
        EXPECT_EQ(appended, expected);
    }
}

} // namespace
} // namespace morvane
