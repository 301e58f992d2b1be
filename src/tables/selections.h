// What the lists of a preset select: for each parameter, sets of its instances.
#pragma once

#include "presetdef/preset_definition.h"
#include "tables/chosen_values.h"
#include "tables/device_tables.h"

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Instances of one parameter: for each dimension the chosen values, or null for all the values of
/// its index.
using Selection = std::vector<const ChosenValues*>;

/// Collects what the include lists or the exclude lists of a preset select from a parameter map.
class Selections {
public:
    /// Both tables are borrowed for the object's life.
    Selections(const IndexTable& indices, const ParameterMap& candidates)
        : indices_(indices),
          candidates_(candidates) {}

    /// Adds what the list's own index clauses and then its items select. An item whose parameter
    /// is not a candidate selects nothing.
    void add(const PresetList& list);

    /// What has been selected so far, in order, by parameter name.
    const std::map<std::string_view, std::vector<Selection>>& byParameter() const {
        return byParameter_;
    }

private:
    using Candidate = ParameterMap::value_type;

    /// The values that a clause gives to the dimensions it names, by index name.
    using ClauseValues = std::map<std::string_view, const ChosenValues*>;

    void addItem(const PresetItem& item);
    ClauseValues clauseValues(const IndexSpec& clause);
    void apply(const IndexSpec& clause, const ClauseValues& values, const Candidate& candidate);
    static bool agrees(const IndexSpec& clause, const IndexNames& indexNames);

    const IndexTable& indices_;
    const ParameterMap& candidates_;
    std::deque<ChosenValues> values_; ///< what the selections point to; a deque never moves them
    std::map<std::string_view, std::vector<Selection>> byParameter_;
};

} // namespace morvane
