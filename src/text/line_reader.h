// Reads a text file line by line, in blocks, so that memory does not grow with the file.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

namespace morvane {

/// Closes a stream that is only read, where closing cannot lose anything.
struct StreamCloser {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
using OwnedStream = std::unique_ptr<std::FILE, StreamCloser>;

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
        auto piece = firstPiece();
        if (!isWhole(piece)) {
            readBlock();
            piece = firstPiece();
            if (piece.empty() || (!isWhole(piece) && std::ferror(stream_) != 0))
                return std::nullopt;
        }
        unread_.remove_prefix(piece.size());
        return piece.substr(0, piece.find('\0'));
    }

private:
    static constexpr std::size_t longestPiece = BufferSize - 1;
    static_assert(longestPiece < blockSize);

    // As much of it as has been read.
    std::string_view firstPiece() const {
        const auto piece = unread_.substr(0, longestPiece);
        const auto lineFeed = piece.find('\n');
        return lineFeed == std::string_view::npos ? piece : piece.substr(0, lineFeed + 1);
    }

    static bool isWhole(std::string_view piece) {
        return piece.size() == longestPiece || piece.ends_with('\n');
    }

    // The piece that the last block has only in part begins the new one.
    void readBlock() {
        if (std::feof(stream_) != 0 || std::ferror(stream_) != 0)
            return;
        std::copy(unread_.begin(), unread_.end(), block_->begin());
        const auto size = unread_.size();
        char* const data = block_->data();
        unread_ = {data, size + std::fread(data + size, 1, blockSize - size, stream_)};
    }

    std::FILE* stream_;
    using Block = std::array<char, blockSize>;
    std::unique_ptr<Block> block_ = std::make_unique_for_overwrite<Block>();
    std::string_view unread_; ///< in the block
};

} // namespace morvane
