// Numbers in definition files, system arguments and keys. Every number is 32-bit and saturates, so
// that a 32-bit device and a 64-bit workstation read the same file alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace morvane {

class Cursor;

/// The number at the beginning of a text.
struct NumberPrefix {
    std::int32_t value = 0; ///< saturated to 32 bits; 0 if there is no number
    std::size_t length = 0; ///< bytes read, leading white space included; 0 if there is no number
};

/// Reads a number as `strtol` does in base 0: decimal, hexadecimal after 0x, octal after 0, each
/// with an optional sign. There are no binary numbers, whatever the C library accepts.
NumberPrefix numberPrefix(std::string_view text);

/// Reads a text that is a number from its beginning to its end, in base 0.
/// The empty text is the number 0, because `strtol` consumes all of it.
std::optional<std::int32_t> wholeNumber(std::string_view text);

/// Reads a text that is a decimal number from its beginning to its end.
/// @return nothing if it is empty or anything else.
std::optional<std::int32_t> wholeDecimal(std::string_view text);

/// Reads the decimal number at the beginning of a text as `atoi` does; 0 if there is none.
std::int32_t leadingDecimal(std::string_view text);

/// Consumes the decimal digits at the cursor, as `strtoul` does in base 10.
/// @return their value, saturated to 32 bits; 0 without a digit.
std::uint32_t readDigits(Cursor& line);

/// The decimal text of `value`, as printed by "%d".
std::string decimalText(std::int32_t value);

} // namespace morvane
