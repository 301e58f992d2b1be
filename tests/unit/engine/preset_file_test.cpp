#include "engine/preset_file.h"
#include "support/preset_lines.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace morvane {
namespace {

using Lines = std::vector<std::string>;

Lines readText(std::string_view text) {
    const test::TempFolder folder;
    const OwnedStream stream(std::fopen(folder.write("preset", text).c_str(), "r"));
    return test::readLines(stream.get());
}

struct FileRow {
    const char* why;
    std::string text;
    Lines entries;
};

const FileRow fileRows[] = {
    {"an empty file", "", {}},
    {"comments, blank lines and lines without =", "# a comment\n\n  \nmode\n", {}},
    {"lines without a name or a value", "=5\n\t=5\ngain[1]=\n[1]=5\n", {}},
    {"a comment with = is an entry", "# a=b\n", {"# a=b"}},
    {"entries in file order, equal ones twice", "b=1\na[0]=2\nb=1\n", {"b=1", "a[0]=2", "b=1"}},
    {"an entry with fewer indices than the one before", "a[0][1]=2\nb=1\n", {"a[0][1]=2", "b=1"}},
    {"a last line without a line feed", "a=1\nb=2", {"a=1", "b=2"}},
    {"a line of 1023 bytes with its line feed in one piece",
     "a=" + std::string(1020, 'x') + "\n",
     {"a=" + std::string(1020, 'x')}},
    {"a longer line in two pieces, the second without =",
     "a=" + std::string(1498, 'x') + "\nb=2\n",
     {"a=" + std::string(1021, 'x'), "b=2"}},
    {"a longer line in two pieces, the second with = of its own",
     "a=" + std::string(1021, 'x') + "c=3\n",
     {"a=" + std::string(1021, 'x'), "c=3"}},
    {"a null byte ends its line", std::string("a=1\0b=2\nc=3\n", 12), {"a=1", "c=3"}},
};

TEST(PresetFile, ReadsEntriesAndSkipsTheRest) {
    for (const auto& [why, text, entries] : fileRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(readText(text), entries);
    }
}

TEST(PresetFile, CountsTheEntriesThatItHandsOut) {
    const test::TempFolder folder;
    const OwnedStream stream(
        std::fopen(folder.write("preset", "a=1\n# no entry\nb=2\nb=\n").c_str(), "r"));
    EXPECT_EQ(readPresetFile(stream.get(), [](PresetEntry&) {}), 2);
}

TEST(PresetFile, ParsesOnlyTheLinesThatWereNotTaken) {
    const test::TempFolder folder;
    const OwnedStream stream(
        std::fopen(folder.write("preset", "a=1\n\nb=2\nc=3\n# no entry\n").c_str(), "r"));
    Lines used;
    const int count = readPresetFile(
        stream.get(), [](std::string_view line) { return line == "b=2\n"; },
        [&](const PresetEntry& entry) { used.push_back(formatPresetLine(entry)); });
    EXPECT_EQ(used, (Lines{"a=1", "c=3"}));
    EXPECT_EQ(count, 3) << "with the one that was taken";
}

struct WriteResult {
    std::string text;
    int count = 0;
};

// The values are those of the keys in their order in the set, bytewise.
WriteResult write(const KeySet& keys, const std::vector<const char*>& values) {
    const test::TempFolder folder;
    std::FILE* const stream = std::fopen(folder.path("preset").c_str(), "w");
    WriteResult result;
    result.count = writePresetFile(stream, keys, values);
    std::fclose(stream);
    result.text = folder.read("preset");
    return result;
}

TEST(PresetFile, WritesOneLineForEachKeyInOrder) {
    for (const char* const last : {"z", "z[3]y[4"}) {
        const auto result = write(KeySet({"gain[1][2]", "a", last}), {"x=y ", "7", "1"});
        EXPECT_EQ(result.text,
                  std::string("a=x=y \ngain[1][2]=7\nz") + (last[1] == 0 ? "" : "[3]") + "=1\n");
        EXPECT_EQ(result.count, 3);
    }
}

struct KeyRow {
    const char* why;
    const char* key;
    const char* line; ///< with the value v; empty if nothing is written
};

// An index value may hold any character, including those at which a key is split.
const KeyRow keyRows[] = {
    {"an opening bracket in an index value", "a[[1][2]", "a[[1][2]=v\n"},
    {"a closing bracket in an index value", "a[1]x][2]", "a[1][2]=v\n"},
    {"two closing brackets in an index value", "a[1]]][2]", "a[1][2]=v\n"},
    {"a group in an index value", "a[1[x]y][2]", "a[1[x][2]=v\n"},
    {"an opening bracket after a closing one", "a[1][]", "a[1][]=v\n"},
    {"an index value that ends in white space", "a[1\t][2\r]", "a[1\t][2\r]=v\n"},
    {"an index value of white space", "a[\t]", "a[\t]=v\n"},
    {"white space after a group", "a[1\r]\t", "a[1\r]=v\n"},
    {"white space after the name", "a\t", "a=v\n"},
    {"white space after the name, before a group", "a\t[1]", "a\t[1]=v\n"},
    {"white space after the name, before an unclosed group", "a\t[1", "a\t=v\n"},
    {"white space alone", "\t", ""},
    {"a group without a name", "[1]", ""},
    {"nothing", "", ""},
};

TEST(PresetFile, WritesCanonicalKeys) {
    for (const auto& [why, key, line] : keyRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(write(KeySet({key}), {"v"}).text, line);
        EXPECT_EQ(write(KeySet({key, "z[1"}), {"v", "v"}).text,
                  *line == '\0' ? "" : std::string(line) + "z=v\n")
            << "before another";
    }
}

TEST(PresetFile, StopsWritingAtTheFirstEntryWithoutAValue) {
    const auto result = write(KeySet({"a", "b", "c", "d"}), {"1", "2", "", "4"});
    EXPECT_EQ(result.text, "a=1\nb=2\n");
    EXPECT_EQ(result.count, 2);
}

TEST(PresetFile, StopsWritingAtTheFirstEntryWithoutAName) {
    const auto result = write(KeySet({"[1]", "b"}), {"1", "2"});
    EXPECT_EQ(result.text, "");
    EXPECT_EQ(result.count, 0);
}

TEST(PresetFile, StopsWritingWhenTheStreamRefuses) {
    const test::TempFolder folder;
    const OwnedStream stream(std::fopen(folder.write("preset", "").c_str(), "r"));
    EXPECT_EQ(writePresetFile(stream.get(), KeySet({"a", "b"}), std::vector{"1", "2"}), 0);
    EXPECT_NE(std::ferror(stream.get()), 0);
}

/// A stream that takes some blocks, and then none.
class FillingDisk {
public:
    explicit FillingDisk(std::size_t blocks) : blocks_(blocks) {
        std::setvbuf(stream_.get(), nullptr, _IONBF, 0);
    }

    std::FILE* stream() const { return stream_.get(); }
    const std::vector<std::string>& taken() const { return taken_; }

private:
    static ssize_t take(void* disk, const char* data, std::size_t size) {
        auto& self = *static_cast<FillingDisk*>(disk);
        if (self.taken_.size() == self.blocks_) {
            errno = ENOSPC;
            return 0; // which is how such a stream reports an error
        }
        self.taken_.emplace_back(data, size);
        return static_cast<ssize_t>(size);
    }

    std::size_t blocks_;
    std::vector<std::string> taken_;
    OwnedStream stream_{fopencookie(this, "w", {nullptr, take, nullptr, nullptr})};
};

// 20,000 lines of 12 bytes: three blocks of 64 KiB and a rest.
TEST(PresetFile, WritesBlocksUntilTheStreamRefusesOne) {
    constexpr std::size_t size = 20000;
    Lines keys;
    for (std::size_t i = 0; i < size; ++i)
        keys.push_back("key[" + std::to_string(10000 + i) + "]");
    const KeySet set(keys);
    const std::vector<const char*> values(size, "1");
    for (const std::size_t blocks : {0U, 1U, 3U, 4U}) {
        SCOPED_TRACE(blocks);
        const FillingDisk disk(blocks);
        const auto count = writePresetFile(disk.stream(), set, values);
        std::string text;
        for (const auto& block : disk.taken())
            text += block;
        EXPECT_EQ(count, std::count(text.begin(), text.end(), '\n'));
        EXPECT_EQ(count == size, blocks == 4);
        EXPECT_TRUE(text.empty() || text.ends_with("=1\n")) << "whole lines";
        EXPECT_EQ(std::ferror(disk.stream()) != 0, blocks < 4);
    }
}

TEST(PresetFile, ReadsBackWhatItWrote) {
    const std::string longValue(1017, 'x');
    const Lines keys{"gain[1][2]", "long", "name with blanks []", "utf8\xc3\xa4[a b]"};
    const std::vector<const char*> values{"-7", longValue.c_str(), " v ", "a=b=[c]"};
    Lines lines;
    for (std::size_t i = 0; i < keys.size(); ++i)
        lines.push_back(keys[i] + "=" + values[i]);
    EXPECT_EQ(readText(write(KeySet(keys), values).text), lines);
}

} // namespace
} // namespace morvane
