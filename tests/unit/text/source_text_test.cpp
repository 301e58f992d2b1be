#include "support/temp_folder.h"
#include "text/source_text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane {
namespace {

constexpr std::size_t smallestBlock = SourceText::longestLine + 1;

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

Stream streamOf(std::string_view content) {
    const test::TempFolder folder;
    return Stream(std::fopen(folder.write("file", content).c_str(), "r"));
}

// The lines as they are handed out. They are still the same at the end, also when they are found
// by their numbers.
std::vector<std::string> linesOf(std::string_view content, std::size_t blockSize) {
    SourceText source(blockSize);
    const auto stream = streamOf(content);
    std::vector<std::string_view> views;
    std::vector<std::string> lines;
    while (const auto line = source.readLine(stream.get())) {
        views.push_back(*line);
        lines.emplace_back(*line);
    }
    EXPECT_EQ(source.readLine(stream.get()), std::nullopt) << "the end stays the end";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(views[i], lines[i]);
        const auto number = static_cast<std::uint32_t>(i + 1);
        EXPECT_EQ(source.line(number), views[i]);
        EXPECT_EQ(source.placeOf(views[i]), (SourceText::Place{number, 0}));
        const auto column = views[i].size() / 2;
        EXPECT_EQ(source.placeOf(views[i].substr(column)),
                  (SourceText::Place{number, static_cast<std::uint32_t>(column)}));
    }
    EXPECT_EQ(source.lineCount(), lines.size());
    EXPECT_EQ(source.line(0), std::nullopt);
    EXPECT_EQ(source.line(static_cast<std::uint32_t>(lines.size() + 1)), std::nullopt);
    return lines;
}

std::string filled(std::size_t size) {
    return std::string(size, 'x'); // NOLINT(modernize-return-braced-init-list): that is two bytes
}

struct Row {
    const char* why;
    std::string content;
    std::vector<std::string> lines;
};

const Row rows[] = {
    {"nothing", "", {}},
    {"a line feed", "\n", {"\n"}},
    {"lines", "ab\n\nc\n", {"ab\n", "\n", "c\n"}},
    {"no line feed at the end", "ab\nc", {"ab\n", "c"}},
    {"the longest line", filled(510) + "\nx", {filled(510) + "\n", "x"}},
    {"a line feed that does not fit", filled(511) + "\nx", {filled(511), "\n", "x"}},
    {"a long line", filled(1100) + "\n", {filled(511), filled(511), filled(78) + "\n"}},
    {"a long line at the end", filled(1022), {filled(511), filled(511)}},
    {"a null byte ends its line", std::string("a\0b\nc\n", 6), {"a", "c\n"}},
    {"a null byte first", std::string("\0b\nc\n", 5), {"", "c\n"}},
    {"a null byte in the first part of a long line",
     std::string("a\0", 2) + filled(600) + "\nc\n",
     {"a", filled(91) + "\n", "c\n"}},
    {"lines over the end of a block",
     filled(300) + "\n" + filled(300) + "\n" + filled(300) + "\n",
     {filled(300) + "\n", filled(300) + "\n", filled(300) + "\n"}},
    {"a line that ends with its block",
     filled(smallestBlock - 10) + "\n12345678\nx\n",
     {filled(smallestBlock - 10) + "\n", "12345678\n", "x\n"}},
};

TEST(SourceText, HandsOutLinesThatStay) {
    for (const auto& [why, content, lines] : rows) {
        for (const auto blockSize : {smallestBlock, smallestBlock + 1, SourceText::usualBlockSize})
            EXPECT_EQ(linesOf(content, blockSize), lines) << why << ", blocks of " << blockSize;
    }
}

TEST(SourceText, HandsOutTheLinesOfAnySizeOfBlock) {
    std::string content;
    std::vector<std::string> lines;
    for (std::size_t size = 1; size < 600; size += 7) {
        lines.push_back(filled(size % 509) + "\n");
        content += lines.back();
    }
    for (auto blockSize = smallestBlock; blockSize < 3 * smallestBlock; blockSize += 11)
        EXPECT_EQ(linesOf(content, blockSize), lines) << blockSize;
}

// The numbers of the lines whose rest has the next number.
std::vector<std::uint32_t> continuedLines(std::string_view content, std::size_t blockSize) {
    SourceText source(blockSize);
    const auto stream = streamOf(content);
    std::uint32_t count = 0;
    while (source.readLine(stream.get()))
        ++count;
    std::vector<std::uint32_t> continued;
    for (std::uint32_t number = 1; number <= count; ++number) {
        if (source.isContinued(number))
            continued.push_back(number);
    }
    return continued;
}

TEST(SourceText, KnowsWhichLinesAreContinued) {
    using Numbers = std::vector<std::uint32_t>;
    const auto content = "a\n" + filled(1100) + "\nb" + std::string("\0c\n", 3) + filled(510) +
                         "\n" + filled(511) + "\n" + filled(511);
    for (const auto blockSize : {smallestBlock, smallestBlock + 1, SourceText::usualBlockSize})
        EXPECT_EQ(continuedLines(content, blockSize), (Numbers{2, 3, 7})) << blockSize;
    const auto nulls = std::string(600, '\0') + "\n";
    EXPECT_EQ(continuedLines(nulls, smallestBlock), Numbers{1}) << "null bytes end no line";
}

TEST(SourceText, KnowsNoPlaceOfOtherTexts) {
    SourceText source;
    const auto stream = streamOf("first\n");
    source.readLine(stream.get());
    EXPECT_EQ(source.placeOf("first"), std::nullopt);
    EXPECT_EQ(source.placeOf(source.keep("first")), std::nullopt);
}

/// A stream that gives a text and then a read error.
Stream brokenStreamOf(std::string& content) {
    const auto read = [](void* rest, char* buffer, std::size_t size) -> ssize_t {
        auto& text = *static_cast<std::string*>(rest);
        if (text.empty())
            return -1;
        const auto count = text.copy(buffer, size);
        text.erase(0, count);
        return static_cast<ssize_t>(count);
    };
    return Stream(fopencookie(&content, "r", {read, nullptr, nullptr, nullptr}));
}

struct BrokenRow {
    const char* why;
    std::string content; ///< before the error
    std::vector<std::string> lines;
};

const BrokenRow brokenRows[] = {
    {"at once", "", {}},
    {"after a line", "a\n", {"a\n"}},
    {"in a line, which is lost", "a\nb", {"a\n"}},
    {"in the second part of a long line", filled(600), {filled(511)}},
};

TEST(SourceText, EndsAtAReadError) {
    for (const auto& [why, before, lines] : brokenRows) {
        auto content = before;
        const auto stream = brokenStreamOf(content);
        SourceText source;
        std::vector<std::string> read;
        while (const auto line = source.readLine(stream.get()))
            read.emplace_back(*line);
        EXPECT_EQ(read, lines) << why;
        EXPECT_NE(std::ferror(stream.get()), 0);
    }
}

TEST(SourceText, KeepsTextsWhereTheyAre) {
    SourceText source;
    const auto first = source.keep("first");
    for (int i = 0; i < 100; ++i)
        source.keep("another");
    const auto moved = std::move(source);
    EXPECT_EQ(first, "first");
}

} // namespace
} // namespace morvane
