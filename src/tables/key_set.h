// A set of keys. A key names one parameter instance, such as "gain[1][2]".
#pragma once

#include "tables/text_list.h"
#include "text/c_string_view.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// What holds for each of some keys.
struct KeyTraits {
    bool areUtf8 = true;

    /// A canonical key is a name, which is not empty, and groups without brackets within them, with
    /// no "=" anywhere and no white space at the end. A line of such a key in a preset data file
    /// reads back as this key.
    bool areCanonical = true;

    /// Makes these traits those of the keys of both.
    void narrow(KeyTraits other) {
        areUtf8 = areUtf8 && other.areUtf8;
        areCanonical = areCanonical && other.areCanonical;
    }
};

/// Of a key, or of a name without brackets, whatever groups follow it.
KeyTraits traitsOfKey(std::string_view key);

/// Of the groups that are made of a value. A key has the traits of its parts.
KeyTraits traitsOfValue(std::string_view value);

/// The texts of keys, for the sets that share them.
struct KeyTexts {
    TextList list;
    KeyTraits traits; ///< hold for all texts, once the list is complete
};

/// Sorted bytewise and unique. The texts may be shared: a set is a list of runs, stretches of a
/// list of texts, so that a hundred presets of the same million keys take little more than one.
class KeySet {
public:
    class const_iterator;

    KeySet() = default;

    /// @param keys in any order; equal ones count once.
    explicit KeySet(std::vector<std::string> keys);

    /// An empty set of keys that stand in `texts`.
    explicit KeySet(std::shared_ptr<const KeyTexts> texts) : texts_(std::move(texts)) {}

    /// Adds the texts from the place `first` to before `last`, which are in order, and greater than
    /// what is in the set.
    void append(std::size_t first, std::size_t last);

    /// Exact match. Takes logarithmic time.
    bool contains(std::string_view key) const;

    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }
    const_iterator begin() const;
    const_iterator end() const;

    /// The key at a place in the set, which counts from 0; valid as long as a copy of the set.
    /// Takes logarithmic time in the number of runs.
    CStringView operator[](std::size_t place) const;

    /// Whether every key is UTF-8, which the bus requires. Like the next, known of the texts that
    /// the set shares with others: false may be due to a key of theirs.
    bool isUtf8() const { return texts_ == nullptr || texts_->traits.areUtf8; }

    /// Whether every key is canonical, see `KeyTraits`.
    bool isCanonical() const { return texts_ == nullptr || texts_->traits.areCanonical; }

    /// A copy of every key.
    std::vector<std::string> strings() const;

    /// Compares the keys, wherever their texts stand.
    bool operator==(const KeySet& other) const;

private:
    friend class KeySearch;

    struct Run {
        std::uint32_t first; ///< place of its first key in the texts
        std::uint32_t place; ///< place of its first key in the set
    };

    std::size_t endOf(std::size_t run) const;
    CStringView keyOf(std::size_t run, std::size_t place) const;

    std::shared_ptr<const KeyTexts> texts_;
    std::vector<Run> runs_; ///< none of them empty
    std::size_t size_ = 0;
};

/// Walks the keys of a set in order.
class KeySet::const_iterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = CStringView;
    using difference_type = std::ptrdiff_t;
    using pointer = const CStringView*;
    using reference = CStringView;

    const_iterator() = default;

    CStringView operator*() const { return set_->keyOf(run_, place_); }
    const_iterator& operator++() {
        if (++place_ == set_->endOf(run_))
            ++run_;
        return *this;
    }
    const_iterator operator++(int) {
        auto before = *this;
        ++*this;
        return before;
    }
    bool operator==(const const_iterator& other) const { return place_ == other.place_; }

private:
    friend class KeySet;
    const_iterator(const KeySet& set, std::size_t place) : set_(&set), place_(place) {}

    const KeySet* set_ = nullptr;
    std::size_t run_ = 0;
    std::size_t place_ = 0;
};

inline std::size_t KeySet::endOf(std::size_t run) const {
    return run + 1 < runs_.size() ? runs_[run + 1].place : size_;
}

inline CStringView KeySet::keyOf(std::size_t run, std::size_t place) const {
    return texts_->list[runs_[run].first + (place - runs_[run].place)];
}

inline KeySet::const_iterator KeySet::begin() const {
    return {*this, 0};
}

inline KeySet::const_iterator KeySet::end() const {
    return {*this, size_};
}

/// Finds many keys of a set, one after the other. Searches onwards from the last key found: keys in
/// the order of the set, as in a stored file, are found in constant time.
class KeySearch {
public:
    /// @param set borrowed for the search's life.
    explicit KeySearch(const KeySet& set) : set_(set) {}

    /// @return the key's place in the set, counted from 0; nothing if the set does not have it.
    std::optional<std::size_t> find(std::string_view key);

private:
    bool isNext(std::string_view key) const;
    void moveTo(std::string_view key);

    const KeySet& set_;
    std::size_t run_ = 0;  ///< that of the next place
    std::size_t next_ = 0; ///< the place after the last key found
};

} // namespace morvane
