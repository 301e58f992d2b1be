// Reads a text file piece by piece through a buffer of fixed size.
#pragma once

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
    /// @param stream open for reading; borrowed, stays open.
    explicit LineReader(std::FILE* stream) : stream_(stream) {}

    /// @return the next piece with its line feed, valid until the next call; nothing at the end of
    ///         the file or after a read error.
    std::optional<std::string_view> next() {
        if (std::fgets(buffer_.data(), static_cast<int>(buffer_.size()), stream_) == nullptr)
            return std::nullopt;
        return std::string_view(buffer_.data());
    }

private:
    std::FILE* stream_;
    std::array<char, BufferSize> buffer_{};
};

} // namespace morvane
