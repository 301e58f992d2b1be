// A set of keys. A key names one parameter instance, such as "gain[1][2]".
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Sorted bytewise and unique. A flat list, because the sets are built once, never changed, and
/// may hold a million keys.
class KeySet {
public:
    using const_iterator = std::vector<std::string>::const_iterator;

    KeySet() = default;

    /// @param keys in any order; equal ones count once.
    explicit KeySet(std::vector<std::string> keys);

    /// Exact match. Takes time in the logarithm of the size.
    bool contains(std::string_view key) const;

    bool empty() const { return keys_.empty(); }
    std::size_t size() const { return keys_.size(); }
    const_iterator begin() const { return keys_.begin(); }
    const_iterator end() const { return keys_.end(); }

    /// The keys in order; valid as long as the set.
    std::span<const std::string> keys() const { return keys_; }

    bool operator==(const KeySet&) const = default;

private:
    std::vector<std::string> keys_;
};

} // namespace morvane
