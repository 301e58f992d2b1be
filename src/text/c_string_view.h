// Null-terminated strings owned by someone else, as C interfaces expect them.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace morvane {

/// Valid as long as the string that it was made from stays where it is, unchanged.
class CStringView {
public:
    // Implicit conversions, as those to a string_view are.
    CStringView(const std::string& text) : text_(text) {} // NOLINT(google-explicit-constructor)
    CStringView(const char* text) : text_(text) {}        // NOLINT(google-explicit-constructor)
    CStringView(std::string&&) = delete;

    /// @param text with a null byte at text[size].
    CStringView(const char* text, std::size_t size) : text_(text, size) {}

    const char* c_str() const { return text_.data(); }
    std::string_view view() const { return text_; }

private:
    std::string_view text_;
};

/// Strings that a C interface has handed out, with their owner.
struct ReceivedStrings {
    std::unique_ptr<void, void (*)(void*)> owner{nullptr, nullptr}; ///< frees the strings
    std::span<const char* const> texts;
};

} // namespace morvane
