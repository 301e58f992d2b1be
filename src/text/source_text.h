// The text of a definition file, in memory as long as the definitions that were parsed from it.
#pragma once

#include "text/line_reader.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <forward_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Reads a file line by line and keeps its lines. Nothing that it hands out ever moves: the names
/// and texts of the parsed definitions are views of it.
class SourceText {
public:
    /// In bytes, the line feed included. A longer line is read as several, each with its own
    /// number.
    static constexpr std::size_t longestLine = 511;

#ifdef MORVANE_SANITIZE
    // Little more than a line, so that AddressSanitizer sees who reads beyond one.
    static constexpr std::size_t usualBlockSize = longestLine + 1;
#else
    static constexpr std::size_t usualBlockSize = 65536;
#endif

    /// @param blockSize the number of bytes to read at once; more than `longestLine`.
    explicit SourceText(std::size_t blockSize = usualBlockSize) : blockSize_(blockSize) {}

    /// Reads the next line. A null byte ends it, whatever stands between that and the line feed.
    ///
    /// @param stream open for reading, the same in each call; borrowed, stays open.
    /// @return the line with its line feed; nothing at the end of the file or after a read error,
    ///         which takes with it what was read of its line.
    std::optional<std::string_view> readLine(std::FILE* stream);

    /// @param number counted from 1.
    /// @return the line as it was read; nothing beyond the last one.
    std::optional<std::string_view> line(std::uint32_t number) const;

    /// The number of a line as it was read, counted from 1, and a byte offset in it.
    struct Place {
        std::uint32_t line = 0;
        std::uint32_t column = 0;

        auto operator<=>(const Place&) const = default;
    };

    /// Where a text stands.
    /// @param text what was handed out, or a part of it.
    /// @return nothing if the text does not stand in the file in one piece.
    std::optional<Place> placeOf(std::string_view text) const;

    /// The number of lines read.
    std::size_t lineCount() const {
        return lineBegins_.size();
    }

    /// Whether the line was longer than `longestLine`, so that the next number is the rest of it.
    bool isContinued(std::uint32_t number) const;

    /// Keeps a text that does not stand in the file in one piece.
    std::string_view keep(std::string text);

private:
    std::string_view fromLine(std::uint32_t number) const;

    std::size_t blockSize_;
    // Not vectors, which would write zeros to all of a block first.
    using Block = char[]; // NOLINT(modernize-avoid-c-arrays)
    std::vector<std::unique_ptr<Block>> blocks_;
    PieceCutter cutter_{longestLine};
    // By number, where the lines begin, counting a whole block for each block before. Files of
    // more than 4 GiB are read, but the lines beyond are not found again.
    std::vector<std::uint32_t> lineBegins_;
    std::forward_list<std::string> composed_; ///< a list never moves its texts
};

} // namespace morvane
