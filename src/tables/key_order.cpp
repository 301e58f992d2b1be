#include "tables/key_order.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace morvane {

namespace {

constexpr int endOfKey = -1; // less than every byte

// Compares texts as if each was followed by its own byte, and equal ones of them by their lengths.
bool isLess(std::string_view a, int behindA, std::string_view b, int behindB) {
    const auto common = std::min(a.size(), b.size());
    if (const auto order = a.substr(0, common).compare(b.substr(0, common)); order != 0)
        return order < 0;
    const auto byteOf = [&](std::string_view text, int behind) {
        return text.size() > common ? static_cast<unsigned char>(text[common]) : behind;
    };
    const auto nextOfA = byteOf(a, behindA);
    const auto nextOfB = byteOf(b, behindB);
    return nextOfA != nextOfB ? nextOfA < nextOfB : a.size() < b.size();
}

bool isLessValue(std::string_view a, std::string_view b) {
    return isLess(a, ']', b, ']');
}

// Whether the keys of one parameter come before those of another.
bool hasLessKeys(const MappedParameter& a, const MappedParameter& b) {
    const auto behind = [](const MappedParameter& parameter) {
        return parameter.map->indexNames(parameter.place).empty() ? endOfKey : '[';
    };
    return isLess(a.map->name(a.place), behind(a), b.map->name(b.place), behind(b));
}

std::vector<std::string_view> sortedTexts(std::span<const std::string> values) {
    std::vector<std::string_view> texts(values.begin(), values.end());
    std::sort(texts.begin(), texts.end(), isLessValue);
    texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
    return texts;
}

// Whether `value`, with its bracket, begins `other`.
bool begins(std::string_view value, std::string_view other) {
    return other.size() > value.size() && other.starts_with(value) && other[value.size()] == ']';
}

void appendAll(const ParameterMap& map, std::vector<MappedParameter>& parameters) {
    for (std::size_t place = 0; place < map.size(); ++place)
        parameters.push_back({&map, place});
}

} // namespace

SortedValues::SortedValues(std::span<const std::string> values)
    : SortedValues(sortedTexts(values)) {}

// If a value begins others, the next one is among them.
SortedValues::SortedValues(std::vector<std::string_view> texts)
    : texts_(std::move(texts)),
      orderKeys_(std::adjacent_find(texts_.begin(), texts_.end(), begins) == texts_.end()) {
    for (const auto text : texts_)
        traits_.narrow(traitsOfValue(text));
}

std::optional<std::size_t> SortedValues::find(std::string_view value) const {
    const auto place = std::lower_bound(texts_.begin(), texts_.end(), value, isLessValue);
    if (place == texts_.end() || *place != value)
        return std::nullopt;
    return static_cast<std::size_t>(place - texts_.begin());
}

bool orderKeys(const Dimensions& dimensions) {
    return std::all_of(dimensions.begin(), dimensions.end(),
                       [](const SortedValues* values) { return values->orderKeys(); });
}

// In the order of names, an indexed parameter may have to wait for others whose names begin with
// its own: "gain2" comes before "gain[1]".
std::vector<MappedParameter> inKeyOrder(const ParameterMap& first, const ParameterMap& second) {
    std::vector<MappedParameter> byName;
    appendAll(first, byName);
    appendAll(second, byName);
    std::inplace_merge(byName.begin(), byName.begin() + static_cast<std::ptrdiff_t>(first.size()),
                       byName.end(), [](const MappedParameter& a, const MappedParameter& b) {
                           return a.map->name(a.place) < b.map->name(b.place);
                       });
    std::vector<MappedParameter> result;
    std::vector<MappedParameter> waiting; // the last has the least keys
    for (const auto& next : byName) {
        while (!waiting.empty() && hasLessKeys(waiting.back(), next)) {
            result.push_back(waiting.back());
            waiting.pop_back();
        }
        waiting.push_back(next);
    }
    result.insert(result.end(), waiting.rbegin(), waiting.rend());
    return result;
}

} // namespace morvane
