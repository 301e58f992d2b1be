#include "tables/key_set.h"

#include "text/character_set.h"
#include "text/utf8.h"

#include <algorithm>
#include <utility>

namespace morvane {

namespace {

bool isCanonicalKey(std::string_view key) {
    static constexpr CharacterSet marks = "[]=";
    constexpr std::string_view trimmed = "\t\f\v\n\r";
    if (key.empty() || key.front() == '[' || trimmed.find(key.back()) != std::string_view::npos)
        return false;
    enum class In {
        name,
        group,
        rest
    } in = In::name;
    for (const char c : key) {
        if (c == '[' && in != In::group)
            in = In::group;
        else if (c == ']' && in == In::group)
            in = In::rest;
        else if (in == In::rest || marks.contains(c))
            return false;
    }
    return in != In::group;
}

// `firstNotLess` by exponential search onwards, so that skipping a few places costs a few
// comparisons.
template <typename IsLess>
std::size_t nextNotLess(std::size_t first, std::size_t last, IsLess isLess) {
    std::size_t step = 1;
    while (step <= last - first && isLess(first + step - 1)) {
        first += step;
        step *= 2;
    }
    return firstNotLess(first, first + std::min(step - 1, last - first), isLess);
}

} // namespace

KeyTraits traitsOfKey(std::string_view key) {
    return {.areUtf8 = isUtf8(key), .areCanonical = isCanonicalKey(key)};
}

KeyTraits traitsOfValue(std::string_view value) {
    return {.areUtf8 = isUtf8(value),
            .areCanonical = value.find_first_of("[]=") == std::string_view::npos};
}

KeySet::KeySet(std::vector<std::string> keys) {
    auto texts = std::make_shared<KeyTexts>();
    for (const auto& key : keys)
        texts->traits.narrow(traitsOfKey(key));
    texts->list.appendSorted(std::move(keys));
    texts_ = std::move(texts);
    append(0, texts_->list.size());
}

void KeySet::append(std::size_t first, std::size_t last) {
    if (first == last)
        return;
    if (runs_.empty() || runs_.back().first + (size_ - runs_.back().place) != first)
        runs_.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(size_)});
    size_ += last - first;
}

bool KeySet::contains(std::string_view key) const {
    return KeySearch(*this).find(key).has_value();
}

CStringView KeySet::operator[](std::size_t place) const {
    const auto next =
        firstNotLess(0, runs_.size(), [&](std::size_t run) { return runs_[run].place <= place; });
    return keyOf(next - 1, place);
}

std::vector<std::string> KeySet::strings() const {
    std::vector<std::string> keys;
    for (const auto key : *this)
        keys.emplace_back(key.view());
    return keys;
}

bool KeySet::operator==(const KeySet& other) const {
    return size_ == other.size_ &&
           std::equal(begin(), end(), other.begin(),
                      [](CStringView a, CStringView b) { return a.view() == b.view(); });
}

std::optional<std::size_t> KeySearch::find(std::string_view key) {
    if (!isNext(key)) {
        moveTo(key);
        if (!isNext(key))
            return std::nullopt;
    }
    const auto place = next_++;
    if (next_ == set_.endOf(run_))
        ++run_;
    return place;
}

bool KeySearch::isNext(std::string_view key) const {
    return next_ < set_.size() && set_.keyOf(run_, next_).view() == key;
}

// Moves to the first key that is not less than `key`: onwards from the last place, unless that is
// beyond it.
void KeySearch::moveTo(std::string_view key) {
    const bool isAhead = next_ > 0 && set_[next_ - 1].view() < key;
    const auto search = [&](std::size_t first, std::size_t last, auto isLess) {
        return isAhead ? nextNotLess(first, last, isLess) : firstNotLess(first, last, isLess);
    };
    if (!isAhead)
        run_ = next_ = 0;
    run_ = search(run_, set_.runs_.size(), [&](std::size_t run) {
        return set_.keyOf(run, set_.endOf(run) - 1).view() < key;
    });
    if (run_ == set_.runs_.size()) {
        next_ = set_.size();
        return;
    }
    const auto first = std::max<std::size_t>(next_, set_.runs_[run_].place);
    next_ = search(first, set_.endOf(run_),
                   [&](std::size_t place) { return set_.keyOf(run_, place).view() < key; });
}

} // namespace morvane
