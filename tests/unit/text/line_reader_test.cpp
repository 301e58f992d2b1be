#include "support/temp_folder.h"
#include "text/line_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane {
namespace {

struct Row {
    const char* why;
    std::string content;
    std::vector<std::string> pieces; ///< of at most 7 bytes
};

const Row rows[] = {
    {"nothing", "", {}},
    {"a line feed", "\n", {"\n"}},
    {"lines", "ab\n\nc\n", {"ab\n", "\n", "c\n"}},
    {"no line feed at the end", "ab\nc", {"ab\n", "c"}},
    {"a line that fits", "123456\nx", {"123456\n", "x"}},
    {"a line feed that does not fit", "1234567\nx", {"1234567", "\n", "x"}},
    {"a long line", "123456789012345\n", {"1234567", "8901234", "5\n"}},
    {"a null byte ends its piece", std::string("a\0b\nc\n", 6), {"a", "c\n"}},
    {"a null byte first", std::string("\0b\nc\n", 5), {"", "c\n"}},
};

TEST(LineReader, HandsOutPieces) {
    for (const auto& [why, content, pieces] : rows) {
        SCOPED_TRACE(why);
        const test::TempFolder folder;
        const OwnedStream stream(std::fopen(folder.write("file", content).c_str(), "r"));
        LineReader<8> reader(stream.get());
        std::vector<std::string> read;
        while (const auto piece = reader.next())
            read.emplace_back(*piece);
        EXPECT_EQ(read, pieces);
        EXPECT_EQ(reader.next(), std::nullopt) << "the end stays the end";
    }
}

TEST(LineReader, EndsAtAReadError) {
    const test::TempFolder folder;
    const OwnedStream stream(std::fopen(folder.path("").c_str(), "r")); // a folder
    LineReader<8> reader(stream.get());
    EXPECT_EQ(reader.next(), std::nullopt);
    EXPECT_NE(std::ferror(stream.get()), 0);
}

} // namespace
} // namespace morvane
