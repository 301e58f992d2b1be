#include "text/number.h"

#include "text/cursor.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace morvane {

namespace {

constexpr int decimal = 10;

bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// A base and the bytes that say so.
struct BasePrefix {
    int base;
    std::size_t length;
};

// What a number that may have a prefix begins with. A "0x" without a digit is a 0 and an "x".
BasePrefix basePrefix(std::string_view text) {
    if (!text.starts_with('0'))
        return {decimal, 0};
    if (text.size() > 2 && (text[1] == 'x' || text[1] == 'X') && isHexDigit(text[2]))
        return {16, 2};
    return {8, 0};
}

/// The digits at the beginning of a text.
struct Digits {
    std::uint32_t value = 0; ///< saturated
    std::size_t length = 0;
};

Digits leadingDigits(std::string_view text, int base) {
    Digits digits;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), digits.value, base);
    if (error == std::errc::result_out_of_range)
        digits.value = std::numeric_limits<std::uint32_t>::max();
    digits.length = static_cast<std::size_t>(end - text.data());
    return digits;
}

std::int32_t withSign(std::uint32_t magnitude, bool isNegative) {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto value = isNegative ? -std::int64_t{magnitude} : std::int64_t{magnitude};
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

std::size_t signLength(std::string_view text) {
    return text.starts_with('+') || text.starts_with('-') ? 1 : 0;
}

// Reads white space, a sign, a prefix if `basePrefixOf` finds one, and digits.
template <typename BasePrefixOf>
NumberPrefix signedPrefix(std::string_view text, BasePrefixOf basePrefixOf) {
    auto rest = text;
    while (!rest.empty() && isSpace(rest.front()))
        rest.remove_prefix(1);
    const bool isNegative = rest.starts_with('-');
    rest.remove_prefix(signLength(rest));
    const auto [base, length] = basePrefixOf(rest);
    rest.remove_prefix(length);
    const auto digits = leadingDigits(rest, base);
    if (digits.length == 0)
        return {};
    return {withSign(digits.value, isNegative), text.size() - rest.size() + digits.length};
}

NumberPrefix decimalPrefix(std::string_view text) {
    return signedPrefix(text, [](std::string_view) { return BasePrefix{decimal, 0}; });
}

} // namespace

NumberPrefix numberPrefix(std::string_view text) {
    return signedPrefix(text, basePrefix);
}

std::optional<std::int32_t> wholeNumber(std::string_view text) {
    const auto number = numberPrefix(text);
    if (number.length != text.size())
        return std::nullopt;
    return number.value;
}

std::optional<std::int32_t> wholeDecimal(std::string_view text) {
    const auto number = decimalPrefix(text);
    if (text.empty() || number.length != text.size())
        return std::nullopt;
    return number.value;
}

std::int32_t leadingDecimal(std::string_view text) {
    return decimalPrefix(text).value;
}

std::uint32_t readDigits(Cursor& line) {
    const auto digits = leadingDigits(line.rest(), decimal);
    line.advance(digits.length);
    return digits.value;
}

std::string decimalText(std::int32_t value) {
    return std::to_string(value);
}

} // namespace morvane
