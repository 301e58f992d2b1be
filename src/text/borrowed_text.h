// Texts that belong to somebody else and end with a byte 0, as C interfaces want them.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace morvane {

/// Valid as long as the text that it was made from stays where it is, unchanged.
class BorrowedText {
public:
    // Made from texts without a word, as a string_view is.
    BorrowedText(const std::string& text) : text_(text) {} // NOLINT(google-explicit-constructor)
    BorrowedText(const char* text) : text_(text) {}        // NOLINT(google-explicit-constructor)
    BorrowedText(std::string&&) = delete;

    /// @param text with a byte 0 at text[size].
    BorrowedText(const char* text, std::size_t size) : text_(text, size) {}

    const char* c_str() const { return text_.data(); }
    std::string_view view() const { return text_; }

private:
    std::string_view text_;
};

/// Texts as a C interface has handed them out, with what keeps them.
struct SharedTexts {
    std::shared_ptr<const void> owner; ///< frees the texts when the last copy of it is gone
    std::span<const char* const> texts;
};

} // namespace morvane
