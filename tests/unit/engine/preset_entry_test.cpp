#include "engine/preset_entry.h"

#include <gtest/gtest.h>

namespace morvane {

namespace {

void expectEqual(const PresetEntry& entry, const PresetEntry& expected) {
    EXPECT_EQ(entry.name, expected.name);
    EXPECT_EQ(entry.indices, expected.indices);
    EXPECT_EQ(entry.value, expected.value);
}

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
    {"text between and after groups is dropped",
     "gain[1]x[2]junk",
     {"gain", {"1", "2"}, ""},
     "gain[1][2]"},
    {"text between groups is dropped", "gain[1]x[2]", {"gain", {"1", "2"}, ""}, "gain[1][2]"},
    {"an empty index", "gain[][3]", {"gain", {"", "3"}, ""}, "gain[][3]"},
    {"an opening bracket inside a group", "gain[[1]", {"gain", {"[1"}, ""}, "gain[[1]"},
    {"a closing bracket before the first group", "ga]in[1]", {"ga]in", {"1"}, ""}, "ga]in[1]"},
    {"blanks stay", " gain [ 1 ]", {" gain ", {" 1 "}, ""}, " gain [ 1 ]"},
    {"trailing blanks stay", "gain ", {"gain ", {}, ""}, "gain "},
    {"other trailing white space is dropped", "gain\t\f\v\n\r", {"gain", {}, ""}, "gain"},
    {"leading white space stays", "\tgain", {"\tgain", {}, ""}, "\tgain"},
    {"white space alone is no name", "\t\v", {"", {}, ""}, ""},
    {"before an index it stays", "\t[1]", {"\t", {"1"}, ""}, "\t[1]"},
    {"a group without a name", "[1]", {"", {"1"}, ""}, ""},
    {"nothing", "", {"", {}, ""}, ""},
};

TEST(PresetKey, IsParsedAndRebuilt) {
    for (const auto& [why, key, entry, canonical] : keyRows) {
        SCOPED_TRACE(why);
        PresetEntry parsed{"left over", {"1", "2", "3"}, "left over"};
        parsePresetKey(key, parsed);
        expectEqual(parsed, entry);
        EXPECT_EQ(presetKey(parsed), canonical);
    }
}

struct LineRow {
    const char* why;
    std::string_view line;
    PresetEntry entry;
};

const LineRow lineRows[] = {
    {"key and value", "gain[1][2]=7", {"gain", {"1", "2"}, "7"}},
    {"everything after the first = is the value", "mode=a=b", {"mode", {}, "a=b"}},
    {"blanks on both sides of = stay", "level = 5", {"level ", {}, " 5"}},
    {"a DOS line end is dropped", "gain[1]=5\r\n", {"gain", {"1"}, "5"}},
    {"trailing blanks stay", "gain[1]=5  \n", {"gain", {"1"}, "5  "}},
    {"only the trailing run is dropped", "mode=a\tb\t \t\n", {"mode", {}, "a\tb\t "}},
    {"white space before = is cut from the key", "mode\t=1", {"mode", {}, "1"}},
    {"no value", "gain[1]=", {"gain", {"1"}, ""}},
    {"a key of white space", "\t=5", {"", {}, "5"}},
    {"a value of white space", "mode=\t\n", {"mode", {}, ""}},
    {"no name", "=5", {"", {}, "5"}},
    {"no =", "# comment", {}},
    {"nothing", "", {}},
    {"only white space", "\t\n", {}},
};

TEST(PresetLine, IsParsed) {
    for (const auto& [why, line, entry] : lineRows) {
        SCOPED_TRACE(why);
        PresetEntry parsed{"left over", {"1", "2", "3"}, "left over"};
        parsePresetLine(line, parsed);
        expectEqual(parsed, entry);
    }
}

TEST(PresetLine, IsRebuiltWithoutALineFeed) {
    const std::pair<const char*, const char*> lines[] = {{"gain[1][2]=7", "gain[1][2]=7"},
                                                         {"mode=a=b ", "mode=a=b "},
                                                         {"a[1]b[2]c=d", "a[1][2]=d"},
                                                         {"=d", "=d"}};
    for (const auto& [line, rebuilt] : lines) {
        PresetEntry entry;
        parsePresetLine(line, entry);
        EXPECT_EQ(formatPresetLine(entry), rebuilt);
    }
}

} // namespace
} // namespace morvane
