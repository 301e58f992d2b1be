// A set of characters that is known when the program is compiled.
#pragma once

#include <array>
#include <cstddef>
#include <limits>

namespace morvane {

/// A constant that is not static, or a literal that is passed as a set, costs a table on the stack
/// each time.
class CharacterSet {
public:
    /// @param characters a literal.
    // Implicit, so that a constant reads like the literal that it is.
    consteval CharacterSet(const char* characters) { // NOLINT(google-explicit-constructor)
        for (; *characters != '\0'; ++characters)
            has_[static_cast<unsigned char>(*characters)] = true;
    }

    constexpr bool contains(char c) const { return has_[static_cast<unsigned char>(c)]; }

private:
    std::array<bool, std::numeric_limits<unsigned char>::max() + std::size_t{1}> has_{};
};

} // namespace morvane
