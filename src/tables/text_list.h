// Texts in one block of memory: a key of 24 characters takes 29 bytes, and none an allocation.
#pragma once

#include "text/c_string_view.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Binary search: the first number from `first` to before `last` that `isLess` does not hold for,
/// or `last`. It must hold for all before that one.
template <typename IsLess>
std::size_t firstNotLess(std::size_t first, std::size_t last, IsLess isLess) {
    while (first < last) {
        const auto middle = first + (last - first) / 2;
        if (isLess(middle))
            first = middle + 1;
        else
            last = middle;
    }
    return first;
}

/// Keeps its texts null-terminated, one behind the other. Places count from 0.
class TextList {
public:
    /// What all texts together may take, with the null bytes.
    static constexpr std::size_t maximumBytes = std::numeric_limits<std::uint32_t>::max();

    /// Invalidates the texts that were handed out. Beyond `maximumBytes` throws std::bad_alloc, as
    /// when there is no memory left.
    void append(std::string_view text);

    /// Appends texts in bytewise order, equal ones once.
    void appendSorted(std::vector<std::string> texts);

    bool empty() const { return size() == 0; }
    std::size_t size() const { return starts_.size() - 1; }

    CStringView operator[](std::size_t place) const {
        const auto start = starts_[place];
        return {block_.data() + start, starts_[place + 1] - start - 1};
    }

    /// The first place, of a sorted list, whose text is not less than `text`.
    std::size_t lowerBound(std::string_view text) const;

    bool operator==(const TextList&) const = default;

private:
    std::string block_;
    std::vector<std::uint32_t> starts_{0}; ///< in the block; the last is that of the next text
};

} // namespace morvane
