#include "text/token_loop.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane {
namespace {

constexpr int unfinished = -2;

/// Reads words until one of them is a digit, which is the answer.
struct WordReader {
    Cursor& line;
    std::vector<std::string> words{};

    int operator()() {
        EXPECT_EQ(line.tokenColumn(), line.column()) << "the token is marked";
        words.emplace_back(line.word(""));
        return isDigit(words.back().front()) ? words.back().front() - '0' : unfinished;
    }
};

struct Row {
    const char* text;
    int answer;
    std::vector<std::string> words;
    const char* rest;
};

const Row rows[] = {
    {"", unfinished, {}, ""},
    {" \t\n", unfinished, {}, ""},
    {"a b\n", unfinished, {"a", "b"}, ""},
    {"a 0 b\n", 0, {"a", "0"}, " b\n"},
    {"  7", 7, {"7"}, ""},
};

TEST(ReadTokens, GoesOnUntilAnAnswerOrTheEndOfTheLine) {
    for (const auto& [text, answer, words, rest] : rows) {
        SCOPED_TRACE(text);
        Cursor line({text, 1});
        WordReader reader{line};
        EXPECT_EQ(readTokens<unfinished>(line, [&] { return reader(); }), answer);
        EXPECT_EQ(reader.words, words);
        EXPECT_EQ(line.rest(), rest);
    }
}

} // namespace
} // namespace morvane
