#include "engine/preset_entry.h"

#include <gtest/gtest.h>

namespace morvane {

void PrintTo(const PresetEntry& entry, std::ostream* out) {
    *out << "{\"" << entry.name << '"';
    for (const auto& index : entry.indices)
        *out << " [" << index << ']';
    *out << " = \"" << entry.value << "\"}";
}

namespace {

struct KeyRow {
    const char* why;
    std::string_view key;
    PresetEntry entry;
    std::string_view canonical;
};

const KeyRow keyRows[] = {
    {"a bare name", "mode", {"mode", {}, ""}, "mode"},
    {"one index", "gain[1]", {"gain", {"1"}, ""}, "gain[1]"},
    {"several indices", "gain[1][2]", {"gain", {"1", "2"}, ""}, "gain[1][2]"},
    {"an unclosed group is dropped", "gain[1", {"gain", {}, ""}, "gain"},
    {"an unclosed second group is dropped", "gain[1][2", {"gain", {"1"}, ""}, "gain[1]"},
    {"text between and behind groups is dropped",
     "gain[1]x[2]junk",
     {"gain", {"1", "2"}, ""},
     "gain[1][2]"},
    {"an empty index", "gain[][3]", {"gain", {"", "3"}, ""}, "gain[][3]"},
    {"an opening bracket inside a group", "gain[[1]", {"gain", {"[1"}, ""}, "gain[[1]"},
    {"a closing bracket before the first group", "ga]in[1]", {"ga]in", {"1"}, ""}, "ga]in[1]"},
    {"blanks stay", " gain [ 1 ]", {" gain ", {" 1 "}, ""}, " gain [ 1 ]"},
    {"trailing blanks stay", "gain ", {"gain ", {}, ""}, "gain "},
    {"other trailing white space goes", "gain\t\f\v\n\r", {"gain", {}, ""}, "gain"},
    {"leading white space stays", "\tgain", {"\tgain", {}, ""}, "\tgain"},
    {"a group without a name", "[1]", {"", {"1"}, ""}, ""},
    {"nothing", "", {"", {}, ""}, ""},
};

TEST(PresetKey, IsTakenApartAndRebuilt) {
    for (const auto& [why, key, entry, canonical] : keyRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(parsePresetKey(key), entry);
        EXPECT_EQ(presetKey(entry), canonical);
    }
}

struct LineRow {
    const char* why;
    std::string_view line;
    PresetEntry entry;
};

const LineRow lineRows[] = {
    {"key and value", "gain[1][2]=7", {"gain", {"1", "2"}, "7"}},
    {"everything behind the first = is the value", "mode=a=b", {"mode", {}, "a=b"}},
    {"blanks on both sides of = stay", "level = 5", {"level ", {}, " 5"}},
    {"a DOS line end goes", "gain[1]=5\r\n", {"gain", {"1"}, "5"}},
    {"trailing blanks stay", "gain[1]=5  \n", {"gain", {"1"}, "5  "}},
    {"only the trailing run goes", "mode=a\tb\t \t\n", {"mode", {}, "a\tb\t "}},
    {"white space before = is cut from the key", "mode\t=1", {"mode", {}, "1"}},
    {"no value", "gain[1]=", {"gain", {"1"}, ""}},
    {"a value of white space", "mode=\t\n", {"mode", {}, ""}},
    {"no name", "=5", {"", {}, "5"}},
    {"no =", "# comment", {}},
    {"nothing", "", {}},
    {"only white space", "\t\n", {}},
};

TEST(PresetLine, IsTakenApart) {
    for (const auto& [why, line, entry] : lineRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(parsePresetLine(line), entry);
    }
}

TEST(PresetLine, IsRebuiltWithoutALineFeed) {
    EXPECT_EQ(formatPresetLine({"gain", {"1", "2"}, "7"}), "gain[1][2]=7");
    EXPECT_EQ(formatPresetLine({"mode", {}, "a=b "}), "mode=a=b ");
}

} // namespace
} // namespace morvane
