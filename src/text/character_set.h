// A set of characters that is known when the program is compiled.
#pragma once

#include <array>
#include <cstddef>
#include <limits>

namespace morvane {

class CharacterSet {
public:
    /// @param characters a literal.
    // Implicit, so that callers pass the literal itself: word(",}").
    consteval CharacterSet(const char* characters) { // NOLINT(google-explicit-constructor)
        for (; *characters != '\0'; ++characters)
            has_[static_cast<unsigned char>(*characters)] = true;
    }

    constexpr bool contains(char c) const { return has_[static_cast<unsigned char>(c)]; }

private:
    std::array<bool, std::numeric_limits<unsigned char>::max() + std::size_t{1}> has_{};
};

} // namespace morvane
