// The bytewise order of keys, decided by what they are made of: comparing whole keys costs more
// than making them.
#pragma once

#include "tables/device_tables.h"
#include "tables/key_set.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// The values of a dimension, each once, in the order of the keys that they make. What counts
/// behind a value is its bracket: "10" comes before "1", as "gain[10]" before "gain[1]".
class SortedValues {
public:
    /// @param values borrowed.
    explicit SortedValues(std::span<const std::string> values);

    /// @param texts sorted already; part of a SortedValues.
    explicit SortedValues(std::vector<std::string_view> texts);

    const std::vector<std::string_view>& texts() const { return texts_; }

    /// Whether combining the values with those of other dimensions makes keys in order, each once.
    /// Not if one of them, with its bracket, begins another, as "a" does in "p[a]x]".
    bool orderKeys() const { return orderKeys_; }

    /// Of the groups that are made of the values.
    KeyTraits traits() const { return traits_; }

    /// The place of a value; nothing if it is not there.
    std::optional<std::size_t> find(std::string_view value) const;

private:
    std::vector<std::string_view> texts_;
    bool orderKeys_;
    KeyTraits traits_;
};

/// The values of each dimension of a parameter; borrowed.
using Dimensions = std::vector<const SortedValues*>;

/// Whether `forEachKey` makes keys in order, each once.
bool orderKeys(const Dimensions& dimensions);

/// Calls `take` with the key of every combination of one value per dimension, the last dimension
/// fastest; with the bare name if there are no dimensions.
/// @param dimensions none of them empty.
template <typename Take>
void forEachKey(std::string_view name, const Dimensions& dimensions, Take take) {
    if (dimensions.empty()) {
        take(name);
        return;
    }
    struct Digit {
        std::size_t value = 0;  // place in the dimension
        std::size_t length = 0; // of the key before it
    };
    std::vector<Digit> digits(dimensions.size());
    std::string key(name);
    for (std::size_t i = 0;;) {
        for (; i < digits.size(); ++i) {
            digits[i].length = key.size();
            key.append("[").append(dimensions[i]->texts()[digits[i].value]).append("]");
        }
        take(std::string_view(key));
        while (i > 0 && ++digits[i - 1].value == dimensions[i - 1]->texts().size())
            digits[--i].value = 0;
        if (i == 0)
            return;
        key.resize(digits[--i].length);
    }
}

/// A parameter of one of several maps.
struct MappedParameter {
    const ParameterMap* map;
    std::size_t place;
};

/// All parameters of both maps, in the order of their keys. No key of one parameter stands between
/// those of another: a name has no bracket.
std::vector<MappedParameter> inKeyOrder(const ParameterMap& first, const ParameterMap& second);

} // namespace morvane
