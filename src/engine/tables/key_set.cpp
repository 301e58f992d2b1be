#include "engine/tables/key_set.h"

#include <algorithm>
#include <utility>

namespace morvane {

KeySet::KeySet(std::vector<std::string> keys) : keys_(std::move(keys)) {
    // A preset's keys come as two sorted runs, of read-only and of read-write parameters, unless
    // the values of an index are in another order.
    const auto second = std::is_sorted_until(keys_.begin(), keys_.end());
    if (std::is_sorted(second, keys_.end()))
        std::inplace_merge(keys_.begin(), second, keys_.end());
    else
        std::sort(keys_.begin(), keys_.end());
    keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
    keys_.shrink_to_fit();
}

bool KeySet::contains(std::string_view key) const {
    return std::binary_search(keys_.begin(), keys_.end(), key, std::less<>{});
}

std::optional<std::size_t> KeySearch::find(std::string_view key) {
    auto place = next_;
    if (place == keys_.size() || keys_[place] != key) { // not the one that comes next
        place = lowerBound(key);
        if (place == keys_.size() || keys_[place] != key)
            return std::nullopt;
    }
    next_ = place + 1;
    return place;
}

// The place of the first key that is not less. Steps from the last place on double until they are
// too wide, so that a few keys left out cost a few comparisons.
std::size_t KeySearch::lowerBound(std::string_view key) const {
    const bool isAhead = next_ > 0 && keys_[next_ - 1] < key;
    auto first = isAhead ? next_ : 0;
    std::size_t step = 1;
    while (step <= keys_.size() - first && keys_[first + step - 1] < key) {
        first += step;
        step *= 2;
    }
    const auto range = keys_.subspan(first, std::min(step - 1, keys_.size() - first));
    const auto found = std::lower_bound(range.begin(), range.end(), key, std::less<>{});
    return first + static_cast<std::size_t>(found - range.begin());
}

} // namespace morvane
