// A set of keys. A key names one parameter instance, such as "gain[1][2]".
#pragma once

#include <cstddef>
#include <optional>
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

    /// Exact match. Takes logarithmic time.
    bool contains(std::string_view key) const;

    bool empty() const { return keys_.empty(); }
    std::size_t size() const { return keys_.size(); }
    const_iterator begin() const { return keys_.begin(); }
    const_iterator end() const { return keys_.end(); }

    /// The keys in order; valid as long as the set.
    std::span<const std::string> keys() const { return keys_; }

    /// Whether every key is UTF-8, which the bus requires.
    bool isUtf8() const { return isUtf8_; }

    /// Whether every key is a name, which is not empty, and groups without brackets within them,
    /// with no "=" anywhere and no white space at the end. A line of such a key in a preset data
    /// file reads back as this key.
    bool isCanonical() const { return isCanonical_; }

    bool operator==(const KeySet&) const = default;

private:
    std::vector<std::string> keys_;
    bool isUtf8_ = true;
    bool isCanonical_ = true;
};

/// Finds many keys of a set, one after the other. Searches onwards from the last key found: keys in
/// the order of the set, as in a stored file, are found in constant time.
class KeySearch {
public:
    /// @param set borrowed for the search's life.
    explicit KeySearch(const KeySet& set) : keys_(set.keys()) {}

    /// @return the key's place in the set, counted from 0; nothing if the set does not have it.
    std::optional<std::size_t> find(std::string_view key);

private:
    std::size_t lowerBound(std::string_view key) const;

    std::span<const std::string> keys_;
    std::size_t next_ = 0; ///< the place after the last key found
};

} // namespace morvane
