// UTF-8, for texts that come from files and go to the bus or to the log.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace morvane {

/// The length of the valid UTF-8 character at the beginning of a text, 1 to 4 bytes.
/// @return 0 if there is none: the text is empty, or begins with bytes that are no character, an
///         overlong form, a surrogate, or beyond U+10FFFF.
std::size_t utf8CharacterLength(std::string_view text);

/// Whether a text has nothing but bytes below 128.
inline bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The slow path of `isUtf8`.
bool isUtf8BeyondAscii(std::string_view text);

/// Whether a text is UTF-8 from its beginning to its end.
inline bool isUtf8(std::string_view text) {
    return isAscii(text) || isUtf8BeyondAscii(text);
}

/// The text with a "\xNN" for each byte that is a control character or not UTF-8.
std::string printableText(std::string_view text);

} // namespace morvane
