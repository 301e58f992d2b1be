#include "support/temp_folder.h"
#include "text/line_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>
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

// The pieces that fgets makes of a file, each up to its first null byte.
template <std::size_t Size>
std::vector<std::string> piecesOfFgets(const std::string& path) {
    const OwnedStream stream(std::fopen(path.c_str(), "r"));
    std::vector<std::string> pieces;
    std::array<char, Size> buffer{};
    while (std::fgets(buffer.data(), Size, stream.get()) != nullptr)
        pieces.emplace_back(buffer.data());
    return pieces;
}

template <std::size_t Size>
std::vector<std::string> piecesOf(std::FILE* stream) {
    LineReader<Size> reader(stream);
    std::vector<std::string> pieces;
    while (const auto piece = reader.next())
        pieces.emplace_back(*piece);
    return pieces;
}

// Several blocks, with lines of every length across their ends.
TEST(LineReader, ReadsThePiecesOfFgets) {
    const test::TempFolder folder;
    std::minstd_rand random(1);
    for (const unsigned longest : {3U, 40U, 1022U, 1023U, 1024U, 5000U, 200'000U}) {
        SCOPED_TRACE(longest);
        std::string text;
        while (text.size() < 300'000) {
            text.append(random() % longest, 'x') += random() % 50 == 0 ? '\0' : '\n';
            text.append(random() % 3, '\n');
        }
        for (const std::size_t size : {text.size(), std::size_t{131'072}, std::size_t{65'536}}) {
            const auto path = folder.write("file", text.substr(0, size));
            const OwnedStream stream(std::fopen(path.c_str(), "r"));
            EXPECT_EQ(piecesOf<1024>(stream.get()), piecesOfFgets<1024>(path));
            std::rewind(stream.get());
            EXPECT_EQ(piecesOf<8>(stream.get()), piecesOfFgets<8>(path));
        }
    }
}

// What was read of the line at which the error is, is lost; the lines before it are not.
TEST(LineReader, EndsAtAReadErrorInTheMiddle) {
    std::string text = "ab\ncd\nef";
    const auto read = [](void* data, char* buffer, std::size_t size) -> ssize_t {
        auto& rest = *static_cast<std::string*>(data);
        if (rest.empty()) {
            errno = EIO;
            return -1;
        }
        const auto count = rest.copy(buffer, std::min<std::size_t>(size, 4));
        rest.erase(0, count);
        return static_cast<ssize_t>(count);
    };
    const OwnedStream stream(fopencookie(&text, "r", {read, nullptr, nullptr, nullptr}));
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    EXPECT_EQ(piecesOf<8>(stream.get()), (std::vector<std::string>{"ab\n", "cd\n"}));
    EXPECT_EQ(errno, EIO);
    EXPECT_NE(std::ferror(stream.get()), 0);
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
