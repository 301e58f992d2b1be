#include "tables/key_set.h"

#include "text/utf8.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace morvane {

namespace {

using Keys = std::vector<std::string>;

// The first key that is not greater than the one before it.
Keys::iterator firstOutOfOrder(Keys::iterator begin, Keys::iterator end) {
    const auto before = std::adjacent_find(begin, end, std::greater_equal<>{});
    return before == end ? end : std::next(before);
}

// The keys of both runs, each of which is sorted and has no duplicates.
Keys merged(Keys::iterator begin, Keys::iterator second, Keys::iterator end) {
    Keys result;
    result.reserve(static_cast<std::size_t>(end - begin));
    std::set_union(std::move_iterator(begin), std::move_iterator(second),
                   std::move_iterator(second), std::move_iterator(end), std::back_inserter(result));
    return result;
}

bool isCanonicalKey(std::string_view key) {
    constexpr std::string_view trimmed = "\t\f\v\n\r";
    if (key.empty() || key.front() == '[' || trimmed.find(key.back()) != std::string_view::npos)
        return false;
    enum class In {
        name,
        group,
        rest
    } in = In::name;
    for (const char c : key) {
        if (c == '=' || (c == '[' && in == In::group) || (c == ']' && in != In::group))
            return false;
        if (c == '[')
            in = In::group;
        else if (c == ']')
            in = In::rest;
        else if (in == In::rest)
            return false;
    }
    return in != In::group;
}

void sortUnique(Keys& keys) {
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
}

} // namespace

// A preset's keys come as two runs, of read-only and of read-write parameters, each in order unless
// the values of an index are not.
KeySet::KeySet(std::vector<std::string> keys) {
    const auto second = firstOutOfOrder(keys.begin(), keys.end());
    if (second != keys.end()) {
        if (firstOutOfOrder(second, keys.end()) == keys.end())
            keys = merged(keys.begin(), second, keys.end());
        else
            sortUnique(keys);
    }
    keys.shrink_to_fit();
    keys_ = std::move(keys);
    isUtf8_ = std::all_of(keys_.begin(), keys_.end(), morvane::isUtf8);
    isCanonical_ = std::all_of(keys_.begin(), keys_.end(), isCanonicalKey);
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

// The place of the first key that is not less than `key`. Exponential search onwards from the last
// place, so that skipping a few keys costs a few comparisons.
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
