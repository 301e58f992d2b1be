#include "paramdef/system_parameter.h"
#include "support/definition_text.h"
#include "support/memory_limit.h"
#include "tables/preset_keys.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

std::string textOf(const KeySet& keys) {
    std::string text;
    for (const auto& key : keys.strings())
        text += (text.empty() ? "" : " ") + key;
    return text;
}

/// The keys of a preset with these lists, in order, on a device with these arguments.
KeySet setOf(std::string_view parameterText, const std::string& lists,
             const SystemArguments& arguments = {}) {
    const auto parameters = test::parametersOf(parameterText);
    const auto definitions = test::presetDefinitionsOf("p preset { " + lists + " }");
    return PresetGenerate::keySet(
        PresetGenerate::indexTable(parameters, arguments),
        PresetGenerate::parameterMap(parameters, arguments, AccessSelector::readWrite),
        PresetGenerate::parameterMap(parameters, arguments, AccessSelector::readOnly),
        definitions.presets.at(0));
}

std::string keysOf(std::string_view parameterText, const std::string& lists,
                   const SystemArguments& arguments = {}) {
    return textOf(setOf(parameterText, lists, arguments));
}

struct KeyRow {
    const char* why;
    std::string lists;
    std::string keys;
};

void expectKeys(std::string_view parameterText, std::span<const KeyRow> rows) {
    for (const auto& [why, lists, keys] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(keysOf(parameterText, lists), keys);
    }
}

// The keys of the parameters below.
const std::string allOfS = "s[0] s[1] s[2]";
const std::string allOfT = "t[0][x] t[0][y] t[1][x] t[1][y] t[2][x] t[2][y]";
const std::string allOfU = "u[x] u[y]";
const std::string everything = allOfS + " " + allOfT + " " + allOfU + " v";

constexpr std::string_view readOnlyParameters = "a index { rangeValid { 0..2 } }\n"
                                                "b index { rangeValid { \"x\", \"y\" } }\n"
                                                "s ro { index { a } }\n"
                                                "t rostrict { index { a } index { b } }\n"
                                                "u ro { index { b } }\n"
                                                "v rostrict { }\n"
                                                "absent ro { ctrlValid (0) }\n";

const KeyRow includeRows[] = {
    {"nothing", "", ""},
    {"nothing to exclude adds nothing", "exclude rw { index { a } }", ""},
    {"a parameter without index", "include ro { v }", "v"},
    {"a parameter with an index", "include ro { s }", allOfS},
    {"a parameter with two indices", "include ro { t }", allOfT},
    {"several parameters", "include ro { v, s }", allOfS + " v"},
    {"several lists", "include ro { v } include ro { u }", allOfU + " v"},
    {"a parameter that this device does not have", "include ro { absent, v }", "v"},

    {"all", "include ro { all }", everything},
    {"all, whatever the same list says before it",
     "include ro { s { index { a {99} } }, index { b {z} }, all }", everything},
    {"all, and what earlier lists say", "include ro { s { index { a {99} } } } include ro { all }",
     allOfS + " s[99] " + allOfT + " " + allOfU + " v"},
    {"all ends the walk", "include ro { all } include ro { s { index { a {99} } } }", everything},

    {"a number", "include ro { s { index { a {1} } } }", "s[1]"},
    {"numbers", "include ro { s { index { a {2, 0, 2} } } }", "s[0] s[2]"},
    {"a number that the index does not have", "include ro { s { index { a {99} } } }", "s[99]"},
    {"a number that is negative as a signed one", "include ro { s { index { a {4294967295} } } }",
     "s[-1]"},
    {"keys come in bytewise order", "include ro { s { index { a {2, 10} } } }", "s[10] s[2]"},
    {"a range", "include ro { s { index { a {1..3} } } }", "s[1] s[2] s[3]"},
    {"ranges that overlap", "include ro { s { index { a {1..3, 2..4, 0..0} } } }",
     "s[0] s[1] s[2] s[3] s[4]"},
    {"the end of the numbers", "include ro { s { index { a {2147483646..2147483647} } } }",
     "s[2147483646] s[2147483647]"},
    {"names", "include ro { s { index { a {one, two} } } }", "s[one] s[two]"},
    {"a range after a number counts alone", "include ro { s { index { a {1, 2..3} } } }",
     "s[2] s[3]"},
    {"a number after a range counts alone", "include ro { s { index { a {2..3, 1} } } }", "s[1]"},
    {"a name after a number counts alone", "include ro { s { index { a {1, x} } } }", "s[x]"},

    {"not a number", "include ro { s { index { not a {1} } } }", "s[0] s[2]"},
    {"not a range", "include ro { s { index { not a {1..9} } } }", "s[0]"},
    {"not a name", "include ro { u { index { not b {x} } } }", "u[y]"},
    {"not what the index does not have", "include ro { s { index { not a {99, x} } } }", allOfS},
    {"not any value", "include ro { s { index { not a {0..2} } } }", ""},
    {"not the range alone", "include ro { s { index { not a {0, 1..2} } } }", "s[0]"},

    {"an index without values", "include ro { s { index { a } } }", allOfS},
    {"an item whose own index must be absent", "include ro { s { index { not a } } }", ""},
    {"\"none\" for a parameter without index", "include ro { v { index { none } } }", "v"},
    {"\"none\" for a parameter with index", "include ro { s { index { none } } }", ""},

    {"the first of two dimensions", "include ro { t { index { a {1} } } }", "t[1][x] t[1][y]"},
    {"the second of two dimensions", "include ro { t { index { b {y} } } }",
     "t[0][y] t[1][y] t[2][y]"},
    {"both dimensions", "include ro { t { index { b {y, z}, a {0, 7} } } }",
     "t[0][y] t[0][z] t[7][y] t[7][z]"},
    {"a dimension without a value left drops the parameter",
     "include ro { t { index { a {1}, not b {x, y} } } }", ""},
    {"two clauses: what either describes", "include ro { t { index { a {1} } index { b {y} } } }",
     "t[0][y] t[1][x] t[1][y] t[2][y]"},
    {"an item twice: what either describes",
     "include ro { s { index { a {0} } }, s { index { a {2} } } }", "s[0] s[2]"},
    {"an item in two lists: what either describes",
     "include ro { s { index { a {0} } } } include ro { s }", allOfS},
    {"a selector twice: the last counts", "include ro { s { index { a {1}, a {2} } } }", "s[2]"},

    {"every parameter without index", "include ro { index { none } }", "v"},
    {"every parameter with an index", "include ro { index { a } }", allOfS + " " + allOfT},
    {"every parameter with two indices", "include ro { index { b, a } }", allOfT},
    {"every parameter with one index and not the other", "include ro { index { b, not a } }",
     allOfU},
    {"every parameter without an index of that name", "include ro { index { not a } }",
     allOfU + " v"},
    {"every parameter without either index", "include ro { index { not a, not b } }", "v"},
    {"a value of every parameter with the index", "include ro { index { a {1} } }",
     "s[1] t[1][x] t[1][y]"},
    {"all but a value of every parameter with the index", "include ro { index { not b {x} } }",
     "t[0][y] t[1][y] t[2][y] u[y]"},
    {"values of two indices", "include ro { index { not b {x}, a {99} } }", "t[99][y]"},
    {"clauses and parameters", "include ro { s { index { a {0} } }, index { none } }", "s[0] v"},
};

TEST(PresetKeys, HoldTheReadOnlyParametersThatAreIncluded) {
    expectKeys(readOnlyParameters, includeRows);
}

constexpr std::string_view readWriteParameters = "a index { rangeValid { 0..2 } }\n"
                                                 "b index { rangeValid { \"x\", \"y\" } }\n"
                                                 "s rw { index { a } }\n"
                                                 "t rw { index { a } index { b } }\n"
                                                 "u rw { index { b } }\n"
                                                 "v rw { }\n"
                                                 "absent rw { ctrlValid (0) }\n"
                                                 "w wo { index { a } }\n";

const std::string withoutS = allOfT + " " + allOfU + " v";
const std::string withoutT = allOfS + " " + allOfU + " v";

std::string withS(const std::string& keysOfS) {
    return keysOfS + " " + withoutS;
}

std::string withT(const std::string& keysOfT) {
    return allOfS + " " + keysOfT + " " + allOfU + " v";
}

const KeyRow excludeRows[] = {
    {"nothing", "", everything},
    {"all included adds nothing", "include ro { all }", everything},
    {"a parameter without index", "exclude rw { v }", allOfS + " " + allOfT + " " + allOfU},
    {"a parameter with an index", "exclude rw { s }", withoutS},
    {"a parameter with two indices", "exclude rw { t }", withoutT},
    {"several parameters", "exclude rw { t, s, u }", "v"},
    {"several lists", "exclude rw { t, s } exclude rw { u, v }", ""},
    {"a parameter that this device does not have", "exclude rw { absent }", everything},

    {"all", "exclude rw { all }", ""},
    {"all after others", "exclude rw { v, index { a }, all }", ""},
    {"all in a later list", "exclude rw { v } exclude rw { all } exclude rw { s }", ""},

    {"a number", "exclude rw { s { index { a {1} } } }", withS("s[0] s[2]")},
    {"a range", "exclude rw { s { index { a {1..9} } } }", withS("s[0]")},
    {"a name", "exclude rw { u { index { b {x} } } }", allOfS + " " + allOfT + " u[y] v"},
    {"what the index does not have", "exclude rw { s { index { a {99} } } }", everything},
    {"every value", "exclude rw { s { index { a {2, 1, 0} } } }", withoutS},
    {"a range after a number counts alone", "exclude rw { s { index { a {0, 1..2} } } }",
     withS("s[0]")},
    {"all but a number", "exclude rw { s { index { not a {1} } } }", withS("s[1]")},
    {"all but a range", "exclude rw { s { index { not a {1..9} } } }", withS("s[1] s[2]")},
    {"all but a name", "exclude rw { u { index { not b {x} } } }",
     allOfS + " " + allOfT + " u[x] v"},
    {"all but every value is nothing", "exclude rw { s { index { not a {0..2} } } }", everything},
    {"an index without values", "exclude rw { s { index { a } } }", withoutS},
    {"an item whose own index must be absent", "exclude rw { s { index { not a } } }", everything},
    {"\"none\" for a parameter without index", "exclude rw { v { index { none } } }",
     allOfS + " " + allOfT + " " + allOfU},
    {"\"none\" for a parameter with index", "exclude rw { s { index { none } } }", everything},

    {"a value of the first of two dimensions", "exclude rw { t { index { a {1} } } }",
     withT("t[0][x] t[0][y] t[2][x] t[2][y]")},
    {"a value of the second of two dimensions", "exclude rw { t { index { b {x} } } }",
     withT("t[0][y] t[1][y] t[2][y]")},
    {"values of both dimensions go from each", "exclude rw { t { index { a {1}, b {x} } } }",
     withT("t[0][y] t[2][y]")},
    {"every value of one dimension", "exclude rw { t { index { a {0..2}, b {x} } } }", withoutT},
    {"one dimension without values", "exclude rw { t { index { b } } }", withoutT},
    {"a dimension without a value to take away",
     "exclude rw { t { index { a {1}, not b {x, y} } } }", everything},
    {"two clauses one after the other",
     "exclude rw { t { index { a {1} } index { b {x} } index { a {2} } } }", withT("t[0][y]")},
    {"an item twice", "exclude rw { s { index { a {0} } }, s { index { a {2} } } }", withS("s[1]")},
    {"an item in two lists", "exclude rw { s { index { a {0} } } } exclude rw { s }", withoutS},
    {"all but one value and all but another",
     "exclude rw { s { index { not a {0} } index { not a {1} } } }", withoutS},
    {"a selector twice: the last counts", "exclude rw { s { index { a {1}, not a {2} } } }",
     withS("s[2]")},

    {"every parameter without index", "exclude rw { index { none } }",
     allOfS + " " + allOfT + " " + allOfU},
    {"every parameter with an index", "exclude rw { index { a } }", allOfU + " v"},
    {"every parameter with two indices", "exclude rw { index { b, a } }", withoutT},
    {"every parameter with one index and not the other", "exclude rw { index { a, not b } }",
     withoutS},
    {"every parameter without an index of that name", "exclude rw { index { not a } }",
     allOfS + " " + allOfT},
    {"every parameter without either index", "exclude rw { index { not a, not b } }",
     allOfS + " " + allOfT + " " + allOfU},
    {"a value of every parameter with the index", "exclude rw { index { a {1} } }",
     "s[0] s[2] t[0][x] t[0][y] t[2][x] t[2][y] " + allOfU + " v"},
    {"all but a value of every parameter with the index", "exclude rw { index { not b {x} } }",
     allOfS + " t[0][x] t[1][x] t[2][x] u[x] v"},
    {"clauses and parameters",
     "exclude rw { v, s { index { a {1} } }, index { b {x} }, index { a {0} } }",
     "s[2] t[1][y] t[2][y] u[y]"},
};

TEST(PresetKeys, HoldTheReadWriteParametersThatAreNotExcluded) {
    expectKeys(readWriteParameters, excludeRows);
}

constexpr std::string_view mixedParameters = "a index { rangeValid { 0..1 } }\n"
                                             "z rw { }\n"
                                             "y rw { index { a } }\n"
                                             "x ro { }\n"
                                             "v ro { index { a } }\n"
                                             "w wo { }\n";

const KeyRow mixedRows[] = {
    {"nothing", "", "y[0] y[1] z"},
    {"both sides come in one order", "exclude rw { y { index { a {1} } } } include ro { x }",
     "x y[0] z"},
    {"\"all\" on both sides", "include ro { all } exclude rw { all }", "v[0] v[1] x"},
    {"a list's clause works on its own side", "include ro { index { a } }",
     "v[0] v[1] y[0] y[1] z"},
    {"nothing left", "exclude rw { z, y } include ro { v { index { none } } }", ""},
};

TEST(PresetKeys, HoldBothSides) {
    expectKeys(mixedParameters, mixedRows);
}

// Values that look like numbers written in another way.
constexpr std::string_view textParameters =
    "c index { rangeValid { 7, \"07\", \"auto\", -1, \"\" } }\n"
    "p rw { index { c } }\n";

const KeyRow textRows[] = {
    {"nothing", "", "p[-1] p[07] p[7] p[] p[auto]"},
    {"a range takes away the numbers as they are printed",
     "exclude rw { p { index { c {0..9} } } }", "p[-1] p[07] p[] p[auto]"},
    {"all but a range leaves its numbers however written",
     "exclude rw { p { index { not c {0..9} } } }", "p[07] p[7]"},
    {"a number takes away its text", "exclude rw { p { index { c {7} } } }",
     "p[-1] p[07] p[] p[auto]"},
    {"all but a number leaves its text", "exclude rw { p { index { not c {7} } } }", "p[7]"},
    {"a name takes away its text", "exclude rw { p { index { c {-1, auto} } } }", "p[07] p[7] p[]"},
    {"a number that is negative as a signed one", "exclude rw { p { index { c {4294967295} } } }",
     "p[07] p[7] p[] p[auto]"},
};

TEST(PresetKeys, CompareIndexValuesAsTexts) {
    expectKeys(textParameters, textRows);
}

constexpr std::string_view threeDimensions = "a index { rangeValid { 0..1 } }\n"
                                             "b index { rangeValid { 0..1 } }\n"
                                             "c index { rangeValid { 0..1 } }\n"
                                             "p rw { index { c } index { a } index { b } }\n"
                                             "q ro { index { a } index { b } index { a } }\n";

const KeyRow threeDimensionRows[] = {
    {"all", "",
     "p[0][0][0] p[0][0][1] p[0][1][0] p[0][1][1] p[1][0][0] p[1][0][1] p[1][1][0] p[1][1][1]"},
    {"without a value of the first", "exclude rw { p { index { c {0} } } }",
     "p[1][0][0] p[1][0][1] p[1][1][0] p[1][1][1]"},
    {"without a value of the second", "exclude rw { p { index { a {0} } } }",
     "p[0][1][0] p[0][1][1] p[1][1][0] p[1][1][1]"},
    {"without a value of the third", "exclude rw { p { index { b {0} } } }",
     "p[0][0][1] p[0][1][1] p[1][0][1] p[1][1][1]"},
    {"without a value of the first and third", "exclude rw { p { index { b {0}, c {1} } } }",
     "p[0][0][1] p[0][1][1]"},
    {"without a value of each", "exclude rw { p { index { b {0}, c {1} } index { a {1} } } }",
     "p[0][0][1]"},
    {"without any value of the third", "exclude rw { p { index { b {0..1}, c {1} } } }", ""},
    {"values of an index with two dimensions are for both",
     "exclude rw { all } include ro { q { index { a {1, 5}, b {0} } } }",
     "q[1][0][1] q[1][0][5] q[5][0][1] q[5][0][5]"},
};

TEST(PresetKeys, TakeValuesAwayDimensionByDimension) {
    expectKeys(threeDimensions, threeDimensionRows);
}

TEST(PresetKeys, ExcludeFromBothDimensionsOfOneIndex) {
    EXPECT_EQ(keysOf("a index { rangeValid { 0..2 } } p rw { index { a } index { a } }",
                     "exclude rw { p { index { a {1} } } }"),
              "p[0][0] p[0][2] p[2][0] p[2][2]");
}

TEST(PresetKeys, CombineTheValuesOfTwoDimensions) {
    EXPECT_EQ(
        keysOf("i index { rangeValid { \"a\", \"b\" } } j index { rangeValid { \"x\", \"y\" } }"
               "p rw { index { i } index { j } }",
               ""),
        "p[a][x] p[a][y] p[b][x] p[b][y]");
}

TEST(PresetKeys, HoldAKeyOnceForAValueTwice) {
    EXPECT_EQ(keysOf("a index { rangeValid { 1, 0..1 } } p rw { index { a } }", ""), "p[0] p[1]");
}

// An index that does not exist on this device, and one that exists without values.
constexpr std::string_view missingIndex = "a index { rangeValid { 0..1 } }\n"
                                          "e index { }\n"
                                          "gone index { ctrlValid (0) rangeValid { 0..1 } }\n"
                                          "p ro { index { gone } }\n"
                                          "q ro { index { a } index { gone } }\n"
                                          "r ro { index { e } }\n"
                                          "s ro { index { e } index { a } }\n"
                                          "v ro { }\n"
                                          "x rw { index { gone } }\n"
                                          "y rw { index { a } index { gone } }\n"
                                          "z rw { index { a } index { e } }\n";

const KeyRow missingIndexRows[] = {
    {"nothing", "", ""},
    {"all", "include ro { all }", "v"},
    {"every instance", "include ro { p, q, r, s }", ""},
    {"all values of the missing index", "include ro { p { index { gone } } }", ""},
    {"some values of the missing index", "include ro { p { index { not gone {1} } } }", ""},
    {"values of the other index", "include ro { q { index { a {1} } } }", ""},
    {"values of the other index, left out", "include ro { q { index { not a {1} } } }", ""},
    {"all values of the empty index", "include ro { r { index { e } } }", ""},
    {"some values of the empty index", "include ro { r { index { not e {1} } } }", ""},
    {"values written for the empty index", "include ro { r { index { e {1} } } }", "r[1]"},
    {"values written for the empty index and another", "include ro { s { index { e {x} } } }",
     "s[x][0] s[x][1]"},
    {"values written for another index", "include ro { s { index { a {1} } } }", ""},
    {"every parameter without the missing index", "include ro { index { not gone, not e } }", "v"},
    {"excluding from what has no key",
     "exclude rw { x { index { gone {1} } }, y { index { a {1} } }, z { index { e {1} } } }", ""},
    {"excluding what is not there", "exclude rw { x { index { not gone {1} } }, index { gone } }",
     ""},
};

TEST(PresetKeys, HoldNoKeyWithoutAValueForEveryDimension) {
    expectKeys(missingIndex, missingIndexRows);
}

const KeyRow writtenForMissingIndexRows[] = {
    {"numbers", "include ro { p { index { gone {1} } } }", ""},
    {"ranges", "include ro { p { index { gone {0..1} } } }", ""},
    {"names", "include ro { q { index { a {1}, gone {x} } } }", ""},
    {"for every parameter", "include ro { index { gone {1} } }", ""},
};

TEST(PresetKeys, HoldNoKeyForAMissingIndexWhateverIsWritten) {
    expectKeys(missingIndex, writtenForMissingIndexRows);
}

struct VariantRow {
    const char* why;
    SystemArguments arguments;
    const char* keys;
};

const VariantRow variantRows[] = {
    {"a small device", {{"model", "1"}, {"inputs", "1"}}, "gain[1] mode"},
    {"a big device", {{"model", "2"}, {"inputs", "2"}}, "gain[1] gain[2] level mode version"},
    {"an unknown device", {}, "mode"},
};

TEST(PresetKeys, DependOnTheSystemArguments) {
    for (const auto& [why, arguments, keys] : variantRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(keysOf("input index { rangeValid { 1..(inputs) } }\n"
                         "gain rw { index { input } }\n"
                         "level rw { ctrlValid (model >= 2) }\n"
                         "mode rw { ctrlValid (gain > 3) }\n"
                         "version ro { ctrlValid (model == 2) }\n",
                         "include ro { version }", arguments),
                  keys);
    }
}

// What costs memory is the keys, not the numbers that a definition could stand for.

constexpr std::size_t littleMemory = 64U << 20U;

constexpr std::string_view hugeParameters = "a index { rangeValid { 0..1, \"auto\" } }\n"
                                            "e index { }\n"
                                            "s rw { index { a } }\n"
                                            "t rw { index { a } index { a } }\n"
                                            "r ro { index { a } }\n"
                                            "q ro { index { a } index { e } }\n";

const KeyRow hugeRows[] = {
    {"excluding a huge range",
     "exclude rw { s { index { a {1..2147483647} } }, index { a {0..2147483647} } }",
     "s[auto] t[auto][auto]"},
    {"excluding all the numbers there are",
     "exclude rw { index { a {2147483648..4294967295, 0..2147483647} } }", "s[auto] t[auto][auto]"},
    {"excluding all but a huge range", "exclude rw { index { not a {0..2147483647} } }",
     "s[0] s[1] t[0][0] t[0][1] t[1][0] t[1][1]"},
    {"including all but a huge range",
     "exclude rw { all } include ro { index { not a {1..2147483647} } }", "r[0] r[auto]"},
};

TEST(PresetKeys, TakeNoMemoryForAHugeRangeThatIsNotThere) {
    for (const auto& [why, lists, keys] : hugeRows) {
        SCOPED_TRACE(why);
        const test::MemoryLimit limit(littleMemory);
        EXPECT_EQ(keysOf(hugeParameters, lists), keys);
    }
}

TEST(PresetKeys, TakeNoMemoryForAHugeRangeBesideAnEmptyDimension) {
    const test::MemoryLimit limit(littleMemory);
    EXPECT_EQ(keysOf(hugeParameters,
                     "exclude rw { all } include ro { q { index { a {0..2147483647} } } }"),
              "");
}

// A hundred presets over a hundred thousand keys, of which each leaves something out.
TEST(PresetKeys, TakeLittleMoreMemoryForManyPresets) {
    const auto parameters = test::parametersOf("a index { rangeValid { 1000..1999 } }\n"
                                               "b index { rangeValid { 100..199 } }\n"
                                               "p rw { index { a } index { b } }\n"
                                               "q rw { }\n");
    std::string text;
    for (int i = 100; i < 200; ++i) {
        const auto value = std::to_string(i);
        text.append("p")
            .append(value)
            .append(" preset { exclude rw { q, p { index { b {")
            .append(value)
            .append("} } } } }\n");
    }
    const auto definitions = test::presetDefinitionsOf(text);
    const test::MemoryLimit limit(littleMemory);
    const auto sets = PresetGenerate::keySets(
        PresetGenerate::indexTable(parameters, {}),
        PresetGenerate::parameterMap(parameters, {}, AccessSelector::readWrite), {},
        definitions.presets);
    ASSERT_EQ(sets.size(), 100U);
    for (const auto& keys : sets)
        EXPECT_EQ(keys.size(), 99000U);
    EXPECT_FALSE(sets[7].contains("p[1500][107]"));
    EXPECT_TRUE(sets[7].contains("p[1500][108]"));
    EXPECT_TRUE(sets[8].contains("p[1500][107]"));
    EXPECT_FALSE(sets[8].contains("q"));
}

// Keys that no preset covers cost nothing, even if one covers some of the same parameter.
TEST(PresetKeys, TakeNoMemoryForKeysOfOtherPresets) {
    const test::MemoryLimit limit(littleMemory);
    EXPECT_EQ(keysOf("a index { rangeValid { 0..9999 } } p rw { index { a } index { a } }\n"
                     "q ro { index { a } index { a } }\n",
                     "exclude rw { p { index { not a {1..2} } } }\n"
                     "include ro { q { index { a {3} } } }"),
              "p[1][1] p[1][2] p[2][1] p[2][2] q[3][3]");
}

struct TraitRow {
    const char* why;
    const char* parameters;
    const char* lists;
    bool isUtf8;
    bool isCanonical;
};

constexpr TraitRow traitRows[] = {
    {"no key", "p ro { }", "", true, true},
    {"names and values",
     "a index { rangeValid { \"\xc3\xa4\", \" \" } } p rw { index { a } } q rw { }", "", true,
     true},
    {"a name that is not UTF-8", "p rw { } q\xff rw { }", "", false, true},
    {"a name with an equals sign", "p= rw { } q rw { }", "", true, false},
    {"a value that is not UTF-8", "a index { rangeValid { \"\xff\", 1 } } p rw { index { a } }", "",
     false, true},
    {"a value with a bracket", "a index { rangeValid { 1, \"[\" } } p rw { index { a } }", "", true,
     false},
    {"a value with a closing bracket", "a index { rangeValid { \"x]\" } } p rw { index { a } }", "",
     true, false},
    {"a value with an equals sign", "a index { rangeValid { \"=\" } } p rw { index { a } }", "",
     true, false},
    {"a value that is left out", "a index { rangeValid { 1, \"\xff\", 2 } } p rw { index { a } }",
     "exclude rw { p { index { not a {1, 2} } } }", true, true},
    {"a value as written", "a index { rangeValid { 1 } } p ro { index { a } }",
     "include ro { p { index { a {\xff=} } } }", false, false},
};

TEST(PresetKeys, KnowWhatHoldsForAllOfThem) {
    for (const auto& [why, parameters, lists, isUtf8, isCanonical] : traitRows) {
        SCOPED_TRACE(why);
        const auto keys = setOf(parameters, lists);
        EXPECT_EQ(keys.isUtf8(), isUtf8);
        EXPECT_EQ(keys.isCanonical(), isCanonical);
    }
}

struct ParameterRow {
    const char* why;
    const char* name;
    IndexNames indexNames;
    const char* keys;
};

const ParameterRow parameterRows[] = {
    {"no index", "p", {}, "p"},
    {"one index", "p", {"a"}, "p[0] p[1]"},
    {"two indices", "p", {"b", "a"}, "p[x][0] p[x][1] p[y][0] p[y][1]"},
    {"one index twice", "p", {"a", "a"}, "p[0][0] p[0][1] p[1][0] p[1][1]"},
    {"an index without values", "p", {"a", "e"}, ""},
    {"an index that does not exist", "p", {"gone", "a"}, ""},
};

TEST(ParameterKeys, AreAllTheInstancesOfAParameter) {
    const IndexTable indices{{"a", {"0", "1"}}, {"b", {"x", "y"}}, {"e", {}}};
    for (const auto& [why, name, indexNames, keys] : parameterRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(textOf(PresetGenerate::parameterKeys(indices, name, indexNames)), keys);
    }
}

} // namespace
} // namespace morvane
