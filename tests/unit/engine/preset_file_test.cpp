#include "engine/preset_file.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

struct ReadResult {
    PresetEntryList entries;
    int count = 0;
};

ReadResult readText(std::string_view text) {
    const test::TempFolder folder;
    std::FILE* const stream = std::fopen(folder.write("preset", text).c_str(), "r");
    ReadResult result;
    result.count = readPresetFile(stream, result.entries);
    std::fclose(stream);
    return result;
}

struct FileRow {
    const char* why;
    std::string text;
    PresetEntryList entries;
};

const FileRow fileRows[] = {
    {"an empty file", "", {}},
    {"comments, blank lines and lines without =", "# a comment\n\n  \nmode\n", {}},
    {"lines without a name or a value", "=5\ngain[1]=\n[1]=5\n", {}},
    {"a comment with = is an entry", "# a=b\n", {{"# a", {}, "b"}}},
    {"entries in file order, equal ones twice",
     "b=1\na[0]=2\nb=1\n",
     {{"b", {}, "1"}, {"a", {"0"}, "2"}, {"b", {}, "1"}}},
    {"a last line without a line feed", "a=1\nb=2", {{"a", {}, "1"}, {"b", {}, "2"}}},
    {"a line of 1023 bytes with its line feed in one piece",
     "a=" + std::string(1020, 'x') + "\n",
     {{"a", {}, std::string(1020, 'x')}}},
    {"a longer line in two pieces, the second without =",
     "a=" + std::string(1498, 'x') + "\nb=2\n",
     {{"a", {}, std::string(1021, 'x')}, {"b", {}, "2"}}},
    {"a longer line in two pieces, the second with = of its own",
     "a=" + std::string(1021, 'x') + "c=3\n",
     {{"a", {}, std::string(1021, 'x')}, {"c", {}, "3"}}},
    {"a byte 0 ends its line",
     std::string("a=1\0b=2\nc=3\n", 12),
     {{"a", {}, "1"}, {"c", {}, "3"}}},
};

TEST(PresetFile, ReadsEntriesAndSkipsTheRest) {
    for (const auto& [why, text, entries] : fileRows) {
        SCOPED_TRACE(why);
        const auto result = readText(text);
        EXPECT_EQ(result.entries, entries);
        EXPECT_EQ(result.count, static_cast<int>(entries.size()));
    }
}

TEST(PresetFile, AppendsToTheList) {
    const test::TempFolder folder;
    std::FILE* const stream = std::fopen(folder.write("preset", "b=2\n").c_str(), "r");
    PresetEntryList entries{{"a", {}, "1"}};
    EXPECT_EQ(readPresetFile(stream, entries), 1);
    EXPECT_EQ(entries, (PresetEntryList{{"a", {}, "1"}, {"b", {}, "2"}}));
    std::fclose(stream);
}

struct WriteResult {
    std::string text;
    int count = 0;
};

WriteResult writeEntries(const PresetEntryList& entries) {
    const test::TempFolder folder;
    std::FILE* const stream = std::fopen(folder.path("preset").c_str(), "w");
    WriteResult result;
    result.count = writePresetFile(stream, entries);
    std::fclose(stream);
    result.text = folder.read("preset");
    return result;
}

TEST(PresetFile, WritesOneLineForEachEntryInListOrder) {
    const auto result = writeEntries({{"gain", {"1", "2"}, "7"}, {"a", {}, "x=y "}});
    EXPECT_EQ(result.text, "gain[1][2]=7\na=x=y \n");
    EXPECT_EQ(result.count, 2);
}

TEST(PresetFile, StopsWritingAtTheFirstEntryWithoutAValue) {
    const auto result =
        writeEntries({{"a", {}, "1"}, {"b", {}, "2"}, {"c", {}, ""}, {"d", {}, "4"}});
    EXPECT_EQ(result.text, "a=1\nb=2\n");
    EXPECT_EQ(result.count, 2);
}

TEST(PresetFile, StopsWritingAtTheFirstEntryWithoutAName) {
    const auto result = writeEntries({{"", {"1"}, "1"}, {"b", {}, "2"}});
    EXPECT_EQ(result.text, "");
    EXPECT_EQ(result.count, 0);
}

TEST(PresetFile, StopsWritingWhenTheStreamRefuses) {
    const test::TempFolder folder;
    std::FILE* const stream = std::fopen(folder.write("preset", "").c_str(), "r");
    EXPECT_FALSE(writePresetEntry(stream, {"a", {}, "1"}));
    EXPECT_NE(std::ferror(stream), 0);
    EXPECT_EQ(writePresetFile(stream, {{"a", {}, "1"}, {"b", {}, "2"}}), 0);
    std::fclose(stream);
}

TEST(PresetFile, ReadsBackWhatItWrote) {
    const PresetEntryList entries{{"gain", {"1", "2"}, "-7"},
                                  {"name with blanks ", {""}, " v "},
                                  {"utf8\xc3\xa4", {"a b"}, "a=b=[c]"},
                                  {"long", {}, std::string(1017, 'x')}};
    EXPECT_EQ(readText(writeEntries(entries).text).entries, entries);
}

} // namespace
} // namespace morvane
