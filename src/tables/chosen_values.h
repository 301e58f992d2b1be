// The values that one selector of an index clause stands for.
#pragma once

#include "presetdef/preset_definition.h"
#include "tables/device_tables.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// A set of index values. Ranges stay ranges: excluding 0 to 2147483647 must not cost more than
/// excluding 0 to 3.
class ChosenValues {
public:
    ChosenValues() = default;

    /// The values that a selector gives to its dimension. Numbers, ranges and names are taken as
    /// written, whether or not the index has such a value; with "not", all other values of the
    /// index.
    ///
    /// @param indexValues the values of the selector's index; null if the index does not exist on
    ///                    this device. Borrowed for the life of the set.
    ChosenValues(const IndexSelector& selector, const IndexValues* indexValues);

    /// Everything that is in one of several sets, of one index.
    static ChosenValues united(std::span<const ChosenValues* const> sets);

    /// All values of an index.
    /// @param indexValues borrowed for the life of the set and of those united from it.
    static ChosenValues allOf(const IndexValues& indexValues);

    bool empty() const { return all_.empty() && texts_.empty() && ranges_.empty(); }

    /// @param value one of the index that the set is of.
    bool contains(std::string_view value) const;

    /// Every value, in no particular order.
    IndexValues list() const;

    bool operator<(const ChosenValues& other) const;

private:
    explicit ChosenValues(IndexValues texts);

    static ChosenValues asWritten(const IndexValueSet& set, const IndexValues& indexValues);
    bool excludes(std::string_view value) const;
    bool rangesContain(std::int32_t number) const;

    std::span<const std::string> all_; ///< all the values of the index, if they all belong to it
    IndexValues texts_;                ///< sorted
    std::vector<ValueRange> ranges_;   ///< sorted, without overlap
};

} // namespace morvane
