#include "text/number.h"

#include "text/cursor.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace morvane {

namespace {

// `strtoll` is 64-bit on every architecture; `strtol` is only as wide as the machine's `long`.
NumberPrefix signedPrefix(const std::string& text, int base) {
    using Limits = std::numeric_limits<std::int32_t>;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, base);
    return {static_cast<std::int32_t>(std::clamp<long long>(value, Limits::min(), Limits::max())),
            static_cast<std::size_t>(end - text.c_str())};
}

// The base that a number's prefix selects. Left to itself, a newer C library also accepts 0b101,
// and the same definition file would mean something else there.
int baseOf(std::string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-'))
        text.remove_prefix(1);
    if (!text.starts_with('0'))
        return 10;
    text.remove_prefix(1);
    return text.starts_with('x') || text.starts_with('X') ? 16 : 8;
}

} // namespace

NumberPrefix numberPrefix(std::string_view text) {
    return signedPrefix(std::string(text), baseOf(text));
}

std::optional<std::int32_t> wholeNumber(std::string_view text) {
    const auto number = numberPrefix(text);
    if (number.length != text.size())
        return std::nullopt;
    return number.value;
}

std::optional<std::int32_t> wholeDecimal(std::string_view text) {
    const auto number = signedPrefix(std::string(text), 10);
    if (text.empty() || number.length != text.size())
        return std::nullopt;
    return number.value;
}

std::int32_t leadingDecimal(std::string_view text) {
    return signedPrefix(std::string(text), 10).value;
}

std::uint32_t readDigits(Cursor& line) {
    const auto rest = line.rest();
    const std::string digits(rest.substr(0, rest.find_first_not_of("0123456789")));
    line.advance(digits.size());
    const unsigned long long value = std::strtoull(digits.c_str(), nullptr, 10);
    return static_cast<std::uint32_t>(
        std::min<unsigned long long>(value, std::numeric_limits<std::uint32_t>::max()));
}

std::string decimalText(std::int32_t value) {
    return std::to_string(value);
}

} // namespace morvane
