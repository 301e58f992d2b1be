#include "text/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

struct Row {
    const char* why;
    std::string text;
    bool valid;
    const char* printable;
};

const Row rows[] = {
    {"nothing", "", true, ""},
    {"ASCII", "gain[1]", true, "gain[1]"},
    {"two bytes", "\xc3\xa4", true, "\xc3\xa4"},
    {"three bytes", "\xe2\x82\xac!", true, "\xe2\x82\xac!"},
    {"four bytes", "\xf0\x9f\x8e\x9b", true, "\xf0\x9f\x8e\x9b"},
    {"the first and last of each length",
     "\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80", true,
     "\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80"},
    {"the last character", "\xf4\x8f\xbf\xbf", true, "\xf4\x8f\xbf\xbf"},
    {"control characters", "a\tb\x1b\x7f", true, "a\\x09b\\x1b\\x7f"},
    {"another encoding", "gr\xfc\xdf", false, "gr\\xfc\\xdf"},
    {"a continuation byte alone",
     "\x80"
     "a",
     false, "\\x80a"},
    {"a character that ends too early", "\xe2\x82", false, "\\xe2\\x82"},
    {"a character that another one interrupts",
     "\xe2\x82"
     "a",
     false, "\\xe2\\x82a"},
    {"a character that a longer one interrupts", "\xe2\x82\xe2\x82\xac", false,
     "\\xe2\\x82\xe2\x82\xac"},
    {"an overlong form of two bytes", "\xc0\xaf", false, "\\xc0\\xaf"},
    {"an overlong form of three bytes", "\xe0\x9f\xbf", false, "\\xe0\\x9f\\xbf"},
    {"an overlong form of four bytes", "\xf0\x8f\xbf\xbf", false, "\\xf0\\x8f\\xbf\\xbf"},
    {"the first surrogate", "\xed\xa0\x80", false, "\\xed\\xa0\\x80"},
    {"the last surrogate", "\xed\xbf\xbf", false, "\\xed\\xbf\\xbf"},
    {"beyond the last character", "\xf4\x90\x80\x80", false, "\\xf4\\x90\\x80\\x80"},
    {"a bad byte as the last of eight", "gain[1]\xff", false, "gain[1]\\xff"},
    {"a bad byte after eight good ones", "gain[100]\xff", false, "gain[100]\\xff"},
    {"a bad byte before many good ones", "\xffmixer00Level", false, "\\xffmixer00Level"},
    {"long text", "mixer00Level \xc3\xa4 mixer00Level", true, "mixer00Level \xc3\xa4 mixer00Level"},
    {"bytes that never occur", "\xf8\xff", false, "\\xf8\\xff"},
};

TEST(Utf8, TellsTextFromOtherBytes) {
    for (const auto& [why, text, valid, printable] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(isUtf8(text), valid);
        EXPECT_EQ(printableText(text), printable);
    }
}

} // namespace
} // namespace morvane
