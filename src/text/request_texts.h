// The strings of a request to the Parameter Handler, as the engine passes them to the client, and
// how much room they take.
#pragma once

#include "text/c_string_view.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace morvane {

/// Counts the bytes that strings take as an array on the bus.
class ArraySize {
public:
    static constexpr std::size_t maximum = std::size_t{64} << 20U; ///< that D-Bus allows

    // A string begins at a multiple of 4 with its length of 4 bytes, and is null-terminated.
    void add(std::string_view text) { bytes_ = (bytes_ + 3) / 4 * 4 + 4 + text.size() + 1; }

    std::size_t bytes() const { return bytes_; }
    bool fits() const { return bytes_ <= maximum; }

private:
    std::size_t bytes_ = 0;
};

/// What is set: a key and its new value.
using KeyValue = std::pair<CStringView, CStringView>;

/// Everything that one request sends, by operation. All of it is borrowed.
struct RequestTexts {
    std::string_view origin;  ///< the file of a load, or the preset; for the log
    bool keysAreUtf8 = false; ///< known of all keys below, which then need no check
    std::span<const CStringView> get = {};
    std::span<const KeyValue> set = {};
    std::span<const KeyValue> setStatus = {};
    std::span<const CStringView> reset = {};
    std::span<const CStringView> resetStatus = {};
};

} // namespace morvane
