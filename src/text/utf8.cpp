#include "text/utf8.h"

#include <array>
#include <cstdint>

namespace morvane {

namespace {

/// The characters that begin with one kind of first byte.
struct Form {
    std::size_t length;
    std::uint32_t lowest; ///< a lower character would be in a shorter form
    unsigned char mask;
    unsigned char bits; ///< what the first byte has under the mask
};

constexpr std::array forms{
    Form{1, 0, 0x80, 0x00},
    Form{2, 0x80, 0xE0, 0xC0},
    Form{3, 0x800, 0xF0, 0xE0},
    Form{4, 0x10000, 0xF8, 0xF0},
};

bool isCharacter(std::uint32_t code) {
    constexpr std::uint32_t firstSurrogate = 0xD800;
    constexpr std::uint32_t lastSurrogate = 0xDFFF;
    constexpr std::uint32_t last = 0x10FFFF;
    return code <= last && (code < firstSurrogate || code > lastSurrogate);
}

std::size_t lengthInForm(std::string_view text, const Form& form) {
    if (text.size() < form.length)
        return 0;
    std::uint32_t code = static_cast<unsigned char>(text[0]) & ~std::uint32_t{form.mask};
    for (const char c : text.substr(1, form.length - 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U)
            return 0;
        code = code << 6U | (byte & 0x3FU);
    }
    return code >= form.lowest && isCharacter(code) ? form.length : 0;
}

std::string escaped(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    return {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

} // namespace

std::size_t utf8CharacterLength(std::string_view text) {
    if (text.empty())
        return 0;
    const auto first = static_cast<unsigned char>(text.front());
    for (const auto& form : forms) {
        if ((first & form.mask) == form.bits)
            return lengthInForm(text, form);
    }
    return 0;
}

bool isUtf8BeyondAscii(std::string_view text) {
    while (!text.empty()) {
        const auto length = utf8CharacterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string printableText(std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        const auto length = utf8CharacterLength(text);
        if (length == 0 || isControl(text.front()))
            printable += escaped(text.front());
        else
            printable += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return printable;
}

} // namespace morvane
