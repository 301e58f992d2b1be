#include "device.h"
#include "support/definition_text.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane::sim {
namespace {

constexpr std::string_view definitions =
    "input index { rangeValid { 1..(inputs) } }\n"
    "gone index { ctrlValid (0) rangeValid { 1 } }\n"
    "gain rw { index { input } rangeValid { -60..12, \"off\" }\n"
    "  default (model == 2) { -10 } default { 0 } }\n"
    "label rw { default { \"none\" } }\n"
    "mode rw { rangeValid { \"auto\", 3..5 } }\n"
    "level rw { rangeValid (model == 2) { 0..(inputs * 10) }\n"
    "  rangeValid { 100 } default { (inputs + 1) } }\n"
    "free rw { }\n"
    "never rw { rangeValid (model == 9) { 1 } }\n"
    "lost rw { index { gone } }\n"
    "big rw { ctrlValid (model == 2) }\n"
    "changing rw { rangeValid (gain == 1) { 7 } }\n"
    "version rostrict { default { 7 } }\n"
    "state ro { index { input } index { input } }\n"
    "reboot wo { }\n";

const SystemArguments small{{"model", "1"}, {"inputs", "1"}};
const SystemArguments big{{"model", "2"}, {"inputs", "2"}};

struct KeyRow {
    const char* key;
    bool onSmall;
    bool onBig;
};

constexpr KeyRow keyRows[] = {
    {"gain[1]", true, true},     {"gain[2]", false, true},     {"gain", false, false},
    {"gain[3]", false, false},   {"mode", true, true},         {"big", false, true},
    {"lost", false, false},      {"lost[1]", false, false},    {"version", true, true},
    {"state[1][1]", true, true}, {"state[2][1]", false, true}, {"reboot", true, true},
    {"input", false, false},     {"", false, false},
};

TEST(Device, KnowsTheKeysOfItsVariant) {
    const auto table = test::parametersOf(definitions);
    const Device onSmall(table, small);
    const Device onBig(table, big);
    for (const auto& row : keyRows) {
        EXPECT_EQ(onSmall.find(row.key) != nullptr, row.onSmall) << row.key;
        EXPECT_EQ(onBig.find(row.key) != nullptr, row.onBig) << row.key;
    }
    EXPECT_EQ(onSmall.keyCount(), 10U);
    EXPECT_EQ(onBig.keyCount(), 15U);
}

struct DefaultRow {
    const char* why;
    const char* key;
    const char* value;
};

constexpr DefaultRow defaultRows[] = {
    {"the first default whose condition holds", "gain[1]", "-10"},
    {"a text", "label", "none"},
    {"an expression", "level", "3"},
    {"without a default, the first valid value", "mode", "auto"},
    {"the first of a range with a condition on a parameter", "changing", "7"},
    {"without any valid value, a value that can be stored", "free", "0"},
    {"of a read-only parameter", "version", "7"},
};

TEST(Device, StartsAtTheDefaultsOfItsVariant) {
    const auto table = test::parametersOf(definitions);
    const Device device(table, big);
    for (const auto& [why, key, value] : defaultRows) {
        ASSERT_NE(device.find(key), nullptr) << key;
        EXPECT_EQ(device.find(key)->defaultValue, value) << why;
    }
    EXPECT_EQ(Device(table, small).find("gain[1]")->defaultValue, "0");
}

struct ValueRow {
    const char* key;
    const char* value;
    bool accepted;
};

constexpr ValueRow valueRows[] = {
    {"gain[1]", "-60", true},  {"gain[1]", "12", true},    {"gain[1]", "13", false},
    {"gain[1]", "-61", false}, {"gain[1]", "0xc", true},   {"gain[1]", "off", true},
    {"gain[1]", "Off", false}, {"gain[1]", "", false},     {"gain[1]", "5 ", false},
    {"gain[1]", "5x", false},  {"mode", "auto", true},     {"mode", "4", true},
    {"mode", "2", false},      {"level", "20", true},      {"level", "21", false},
    {"level", "100", true},    {"free", "anything", true}, {"free", "", true},
    {"never", "1", false},
};

TEST(Device, AcceptsTheValidValuesOfItsVariant) {
    const auto table = test::parametersOf(definitions);
    const Device device(table, big);
    for (const auto& [key, value, accepted] : valueRows)
        EXPECT_EQ(device.find(key)->accepted.accepts(value), accepted) << key << "=" << value;
}

TEST(Device, HoldsAHundredThousandKeys) {
    const auto table = test::parametersOf("i index { rangeValid { 1..100 } }\n"
                                          "j index { rangeValid { 1..1000 } }\n"
                                          "p rw { index { i } index { j } default { 5 } }\n");
    const Device device(table, {});
    EXPECT_EQ(device.keyCount(), 100000U);
    for (int i = 1; i <= 100; ++i) {
        const auto key = "p[" + std::to_string(i) + "][" + std::to_string(i * 10) + "]";
        ASSERT_NE(device.find(key), nullptr) << key;
        EXPECT_EQ(device.find(key), device.find("p[1][1]")) << "one record for all instances";
    }
}

} // namespace
} // namespace morvane::sim
