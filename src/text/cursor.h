// A reading position in one line of a definition file. Both definition languages are read through
// it, so a column means the same thing in every error report.
#pragma once

#include "text/character_set.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace morvane {

class SourceText;

/// One line as it was read, line feed included, with its number counted from 1.
/// Borrows the text.
struct SourceLine {
    std::string_view text;
    std::uint32_t number = 0;
    SourceText* source = nullptr; ///< keeps what is put together from several lines
};

/// Says whether `c` is white space: blank, \t, \n, \v, \f or \r.
constexpr bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Says whether `c` is one of '0' to '9'.
constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Returns `text` without the white space at both ends; borrows from `text`.
std::string_view trimSpace(std::string_view text);

/// Walks over one line from left to right. It knows no language: the callers say which characters
/// end a word.
class Cursor {
public:
    /// @param line borrowed for the cursor's life.
    explicit Cursor(SourceLine line) : line_(line) {}

    /// Skips white space.
    /// @return whether anything is left to read.
    bool skipSpace();

    bool atEnd() const { return position_ == line_.text.size(); }

    /// Says whether the rest of the line begins with `expected`, which is not empty, without
    /// consuming it. Checks the first character before the others: most lookups end there.
    bool sees(std::string_view expected) const {
        return sees(expected.front()) && rest().starts_with(expected);
    }
    bool sees(char expected) const { return rest().starts_with(expected); }
    bool seesDigit() const { return !atEnd() && isDigit(rest().front()); }

    /// Consumes `expected` if the rest of the line begins with it.
    bool accept(std::string_view expected);
    bool accept(char expected);

    /// The word that begins here, possibly empty: the run of characters that are neither white
    /// space nor one of `delimiters`. Not consumed.
    std::string_view peekWord(const CharacterSet& delimiters) const;

    /// Consumes and returns the word that begins here, but not the delimiter after it.
    std::string_view word(const CharacterSet& delimiters);

    /// Consumes `count` bytes, at most those that are left.
    void advance(std::size_t count);

    /// What has not been consumed, the line feed included.
    std::string_view rest() const { return line_.text.substr(position_); }

    const SourceLine& line() const { return line_; }

    /// Keeps a text that does not stand on one line as long as the source text, which must be
    /// there.
    std::string_view keep(std::string text) const;

    /// The byte offset in the line of the next character to read, counted from 0.
    std::uint32_t column() const { return static_cast<std::uint32_t>(position_); }

    /// Remembers that a token begins here.
    void markToken() { token_ = position_; }

    /// The column of the last mark, 0 without one.
    std::uint32_t tokenColumn() const { return static_cast<std::uint32_t>(token_); }

private:
    SourceLine line_;
    std::size_t position_ = 0;
    std::size_t token_ = 0;
};

} // namespace morvane
