// Reads a text file line by line, in blocks, so that memory does not grow with the file.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace morvane {

/// Closes a stream that is only read, where closing cannot lose anything.
struct StreamCloser {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
using OwnedStream = std::unique_ptr<std::FILE, StreamCloser>;

/// Cuts what is read of a file into pieces: a line with its line feed, or as much of it as a piece
/// may have. Borrows the blocks that are read.
class PieceCutter {
public:
    /// @param longest in bytes, the line feed included.
    explicit PieceCutter(std::size_t longest) : longest_(longest) {}

    /// Takes the next piece.
    ///
    /// @param stream    read when what is left is not a whole piece, unless it has ended or failed.
    /// @param nextBlock returns the block to read into, a span of more than `longest` bytes. What
    /// is
    ///                  left of the one before is moved to its beginning: it may be the same one.
    /// @return the piece, null bytes included; nothing at the end of the file or after a read
    /// error,
    ///         which takes with it what was read of its line.
    template <typename NextBlock>
    std::optional<std::string_view> next(std::FILE* stream, NextBlock nextBlock) {
        auto piece = first();
        if (!isWhole(piece)) {
            if (std::feof(stream) == 0 && std::ferror(stream) == 0)
                read(stream, nextBlock());
            piece = first();
            if (piece.empty() || (!isWhole(piece) && std::ferror(stream) != 0))
                return std::nullopt;
        }
        unread_.remove_prefix(piece.size());
        return piece;
    }

    /// The first piece of a text, as `next` would cut it.
    std::string_view firstOf(std::string_view text) const {
        const auto piece = text.substr(0, longest_);
        const auto lineFeed = piece.find('\n');
        return lineFeed == std::string_view::npos ? piece : piece.substr(0, lineFeed + 1);
    }

private:
    std::string_view first() const { return firstOf(unread_); }

    bool isWhole(std::string_view piece) const {
        return piece.size() == longest_ || piece.ends_with('\n');
    }

    void read(std::FILE* stream, std::span<char> block) {
        std::copy(unread_.begin(), unread_.end(), block.begin());
        const auto free = block.subspan(unread_.size());
        const auto size = unread_.size() + std::fread(free.data(), 1, free.size(), stream);
        unread_ = {block.data(), size};
        if (size < block.size())
            block[size] = '\0';
    }

    std::size_t longest_;
    std::string_view unread_; ///< in the last block, before a null byte if that is not full
};

/// What a reader sees of a piece: a null byte ends it, as it ends a string.
inline std::string_view upToNull(std::string_view piece) {
    return piece.substr(0, piece.find('\0'));
}

/// Hands out the lines of a stream. A line longer than `BufferSize` - 1 bytes comes out as several
/// pieces, each of which counts as a line; a null byte ends its piece.
template <std::size_t BufferSize>
class LineReader {
public:
    /// What is read at once, in bytes.
    static constexpr std::size_t blockSize = std::size_t{64} << 10U;

    /// @param stream open for reading; borrowed, stays open.
    explicit LineReader(std::FILE* stream) : stream_(stream) {}

    /// @return the next piece with its line feed, valid until the next call; nothing at the end of
    ///         the file or after a read error, which takes with it what was read of its line.
    std::optional<std::string_view> next() {
        const auto piece = cutter_.next(stream_, [this] { return std::span(*block_); });
        return piece ? std::optional(upToNull(*piece)) : std::nullopt;
    }

private:
    static_assert(BufferSize <= blockSize);

    std::FILE* stream_;
    using Block = std::array<char, blockSize>;
    std::unique_ptr<Block> block_ = std::make_unique_for_overwrite<Block>();
    PieceCutter cutter_{BufferSize - 1};
};

} // namespace morvane
