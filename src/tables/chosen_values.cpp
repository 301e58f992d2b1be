#include "tables/chosen_values.h"

#include "text/number.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace morvane {

namespace {

// The decimal texts of the numbers, which are signed: 4294967295 stands for "-1".
IndexValues decimalTexts(const std::vector<std::uint32_t>& numbers) {
    IndexValues texts;
    for (const auto number : numbers)
        texts.push_back(decimalText(static_cast<std::int32_t>(number)));
    return texts;
}

std::vector<ValueRange> merged(std::vector<ValueRange> ranges) {
    std::sort(ranges.begin(), ranges.end(),
              [](const ValueRange& a, const ValueRange& b) { return a.low < b.low; });
    std::vector<ValueRange> result;
    for (const auto& range : ranges) {
        if (!result.empty() && range.low <= result.back().high)
            result.back().high = std::max(result.back().high, range.high);
        else
            result.push_back(range);
    }
    return result;
}

} // namespace

ChosenValues::ChosenValues(IndexValues texts) : texts_(std::move(texts)) {
    std::sort(texts_.begin(), texts_.end());
}

ChosenValues::ChosenValues(const IndexSelector& selector, const IndexValues* indexValues) {
    const IndexValues noValues;
    const auto& all = indexValues != nullptr ? *indexValues : noValues;
    *this = asWritten(selector.values, all);
    if (!selector.isNot)
        return;
    IndexValues others;
    std::copy_if(all.begin(), all.end(), std::back_inserter(others),
                 [this](const std::string& value) { return !excludes(value); });
    *this = ChosenValues(std::move(others));
}

ChosenValues ChosenValues::asWritten(const IndexValueSet& set, const IndexValues& indexValues) {
    using Kind = IndexValueSet::Kind;
    switch (set.kind) {
    case Kind::none:
        return allOf(indexValues);
    case Kind::name:
        return ChosenValues(IndexValues(set.names.begin(), set.names.end()));
    case Kind::number:
        return ChosenValues(decimalTexts(set.numbers));
    case Kind::range:
        break;
    }
    ChosenValues ranges;
    ranges.ranges_ = merged(set.ranges);
    return ranges;
}

ChosenValues ChosenValues::allOf(const IndexValues& indexValues) {
    ChosenValues values;
    values.all_ = indexValues;
    return values;
}

ChosenValues ChosenValues::united(std::span<const ChosenValues* const> sets) {
    ChosenValues result;
    for (const auto* const set : sets) {
        if (result.all_.empty())
            result.all_ = set->all_;
        result.texts_.insert(result.texts_.end(), set->texts_.begin(), set->texts_.end());
        result.ranges_.insert(result.ranges_.end(), set->ranges_.begin(), set->ranges_.end());
    }
    std::sort(result.texts_.begin(), result.texts_.end());
    result.ranges_ = merged(std::move(result.ranges_));
    return result;
}

bool ChosenValues::contains(std::string_view value) const {
    if (!all_.empty())
        return true;
    if (std::binary_search(texts_.begin(), texts_.end(), value, std::less<>{}))
        return true;
    // A range stands for the texts that its numbers are printed as: "7", not "07".
    const auto number = ranges_.empty() ? std::nullopt : wholeDecimal(value);
    return number && decimalText(*number) == value && rangesContain(*number);
}

// What "not" takes away: for a range, every value that is a number in it, however it is written.
// A value that is not a decimal number, such as "auto", is in no range.
bool ChosenValues::excludes(std::string_view value) const {
    if (ranges_.empty())
        return contains(value);
    const auto number = wholeDecimal(value);
    return number && rangesContain(*number);
}

bool ChosenValues::rangesContain(std::int32_t number) const {
    const auto next =
        std::upper_bound(ranges_.begin(), ranges_.end(), number,
                         [](std::int32_t n, const ValueRange& range) { return n < range.low; });
    return next != ranges_.begin() && number <= std::prev(next)->high;
}

IndexValues ChosenValues::list() const {
    IndexValues values(all_.begin(), all_.end());
    values.insert(values.end(), texts_.begin(), texts_.end());
    for (const auto& range : ranges_)
        appendNumbers(range.low, range.high, values);
    return values;
}

bool ChosenValues::operator<(const ChosenValues& other) const {
    const auto count = all_.size();
    const auto otherCount = other.all_.size();
    return std::tie(count, texts_, ranges_) < std::tie(otherCount, other.texts_, other.ranges_);
}

} // namespace morvane
