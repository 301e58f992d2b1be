#include "text/cursor.h"
#include "text/number.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace morvane {
namespace {

struct Row {
    const char* text;
    std::int32_t value;                       ///< of the number at its beginning
    std::size_t length;                       ///< of that number
    std::optional<std::int32_t> wholeDecimal; ///< of the text, if it is one
};

constexpr std::int32_t biggest = 2147483647;
constexpr std::int32_t smallest = -2147483647 - 1;

constexpr Row rows[] = {
    {"", 0, 0, std::nullopt},
    {"0", 0, 1, 0},
    {"42", 42, 2, 42},
    {"-42", -42, 3, -42},
    {"+7", 7, 2, 7},
    {" 7", 7, 2, 7},
    {"7 ", 7, 1, std::nullopt},
    {"0x1F", 31, 4, std::nullopt},
    {"0X1f", 31, 4, std::nullopt},
    {"-0x10", -16, 5, std::nullopt},
    {"017", 15, 3, 17},
    {"08", 0, 1, 8},
    {"0x", 0, 1, std::nullopt},
    {"0xg", 0, 1, std::nullopt},
    {"\v\f\r +0x1F", 31, 9, std::nullopt},
    {"- 1", 0, 0, std::nullopt},
    {"0b101", 0, 1, std::nullopt},
    {"-0B1", 0, 2, std::nullopt},
    {"12abc", 12, 2, std::nullopt},
    {"abc", 0, 0, std::nullopt},
    {"-", 0, 0, std::nullopt},
    {"--5", 0, 0, std::nullopt},
    {"2147483647", biggest, 10, biggest},
    {"2147483648", biggest, 10, biggest},
    {"4294967296", biggest, 10, biggest},
    {"99999999999999999999", biggest, 20, biggest},
    {"-2147483648", smallest, 11, smallest},
    {"-2147483649", smallest, 11, smallest},
    {"-99999999999999999999", smallest, 21, smallest},
};

TEST(Number, IsReadFromTheBeginningOfAText) {
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto number = numberPrefix(row.text);
        EXPECT_EQ(number.value, row.value);
        EXPECT_EQ(number.length, row.length);
    }
}

TEST(Number, IsAWholeText) {
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const bool whole = row.length == std::string(row.text).size();
        EXPECT_EQ(wholeNumber(row.text), whole ? std::optional(row.value) : std::nullopt);
        EXPECT_EQ(wholeDecimal(row.text), row.wholeDecimal);
    }
}

struct LeadingRow {
    const char* text;
    std::int32_t value;
};

constexpr LeadingRow leadingRows[] = {
    {"", 0},
    {"abc", 0},
    {"7", 7},
    {"12abc", 12},
    {" 7", 7},
    {"-3", -3},
    {"+3", 3},
    {"010", 10},
    {"0x10", 0},
    {"1 2", 1},
    {"4294967296", biggest},
    {"-99999999999", smallest},
};

TEST(Number, IsReadInBase10FromTheBeginning) {
    for (const auto& [text, value] : leadingRows)
        EXPECT_EQ(leadingDecimal(text), value) << text;
}

struct DigitsRow {
    const char* text;
    std::uint32_t value;
    const char* rest;
};

constexpr DigitsRow digitsRows[] = {
    {"", 0, ""},
    {"x", 0, "x"},
    {"-5", 0, "-5"},
    {" 5", 0, " 5"},
    {"0", 0, ""},
    {"007x", 7, "x"},
    {"0x10", 0, "x10"},
    {"12..34", 12, "..34"},
    {"4294967295", 4294967295, ""},
    {"4294967296,", 4294967295, ","},
    {"99999999999999999999999 ", 4294967295, " "},
};

TEST(Number, IsReadDigitByDigit) {
    for (const auto& [text, value, rest] : digitsRows) {
        SCOPED_TRACE(text);
        Cursor line({text, 1});
        EXPECT_EQ(readDigits(line), value);
        EXPECT_EQ(line.rest(), rest);
    }
}

TEST(Number, HasADecimalText) {
    EXPECT_EQ(decimalText(0), "0");
    EXPECT_EQ(decimalText(-17), "-17");
    EXPECT_EQ(decimalText(biggest), "2147483647");
    EXPECT_EQ(decimalText(smallest), "-2147483648");
}

} // namespace
} // namespace morvane
