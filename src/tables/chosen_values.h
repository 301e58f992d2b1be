// The values that one selector of an index clause stands for.
#pragma once

#include "presetdef/preset_definition.h"
#include "tables/device_tables.h"

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
    ///                    this device.
    ChosenValues(const IndexSelector& selector, const IndexValues* indexValues);

    bool empty() const { return texts_.empty() && ranges_.empty(); }
    bool contains(std::string_view value) const;

    /// Every value, in no particular order.
    IndexValues list() const;

private:
    explicit ChosenValues(IndexValues texts);

    static ChosenValues asWritten(const IndexValueSet& set, const IndexValues& indexValues);
    bool excludes(std::string_view value) const;
    bool rangesContain(std::int32_t number) const;

    IndexValues texts_;              ///< sorted
    std::vector<ValueRange> ranges_; ///< sorted, without overlap
};

} // namespace morvane
