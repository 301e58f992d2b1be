#include "text/cursor.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

TEST(Cursor, TakesTheSixWhiteSpaceCharactersForSpace) {
    for (int c = 0; c < 256; ++c) {
        const bool expected =
            std::string_view(" \t\n\v\f\r").find(static_cast<char>(c)) != std::string_view::npos;
        EXPECT_EQ(isSpace(static_cast<char>(c)), expected) << c;
    }
}

TEST(Cursor, SkipsSpaceAndSaysWhetherAnythingIsLeft) {
    Cursor line({" \t\v\f\r\nx", 1});
    EXPECT_TRUE(line.skipSpace());
    EXPECT_EQ(line.column(), 6U);
    EXPECT_TRUE(line.accept('x'));
    EXPECT_FALSE(line.skipSpace());
    EXPECT_TRUE(line.atEnd());
}

struct WordRow {
    const char* why;
    std::string_view text;
    CharacterSet delimiters;
    std::string_view word;
};

constexpr WordRow wordRows[] = {
    {"ends at white space", "gain rw", "{", "gain"},
    {"ends at a delimiter", "gain{", "{", "gain"},
    {"ends at any of several delimiters", "a,b}", ",}", "a"},
    {"ends with the line", "gain", "{", "gain"},
    {"is empty at a delimiter", "{gain", "{", ""},
    {"is empty at white space", " gain", "{", ""},
    {"is empty at the end", "", "{", ""},
    {"takes characters that are no delimiters here", "a{b", "", "a{b"},
    {"takes bytes above 127", "\xc3\xa4\xff x", "", "\xc3\xa4\xff"},
};

TEST(Cursor, ReadsWords) {
    for (const auto& [why, text, delimiters, word] : wordRows) {
        SCOPED_TRACE(why);
        Cursor line({text, 1});
        EXPECT_EQ(line.peekWord(delimiters), word);
        EXPECT_EQ(line.column(), 0U) << "peeking consumes nothing";
        EXPECT_EQ(line.word(delimiters), word);
        EXPECT_EQ(line.column(), word.size());
        EXPECT_EQ(line.rest(), text.substr(word.size()));
    }
}

TEST(Cursor, AcceptsOnlyWhatComesNext) {
    Cursor line({"..5", 7});
    EXPECT_FALSE(line.accept('5'));
    EXPECT_FALSE(line.accept("..."));
    EXPECT_EQ(line.column(), 0U);
    EXPECT_TRUE(line.accept(".."));
    EXPECT_TRUE(line.seesDigit());
    EXPECT_EQ(line.rest(), "5");
    EXPECT_EQ(line.line().number, 7U);
}

TEST(Cursor, NeverAdvancesBeyondTheEnd) {
    Cursor line({"ab", 1});
    line.advance(1);
    line.advance(100);
    EXPECT_TRUE(line.atEnd());
    EXPECT_EQ(line.column(), 2U);
    EXPECT_FALSE(line.seesDigit());
    EXPECT_FALSE(line.sees('a'));
}

TEST(Cursor, RemembersWhereATokenBegan) {
    Cursor line({"ab cd", 1});
    EXPECT_EQ(line.tokenColumn(), 0U);
    line.advance(3);
    line.markToken();
    line.advance(2);
    EXPECT_EQ(line.tokenColumn(), 3U);
}

TEST(TrimSpace, CutsBothEndsAndNothingElse) {
    EXPECT_EQ(trimSpace(" \t a b \r\n"), "a b");
    EXPECT_EQ(trimSpace("ab"), "ab");
    EXPECT_EQ(trimSpace(" \n"), "");
    EXPECT_EQ(trimSpace(""), "");
}

} // namespace
} // namespace morvane
