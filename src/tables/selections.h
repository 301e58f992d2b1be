// What the lists of a preset select: for each parameter, sets of its instances.
#pragma once

#include "presetdef/preset_definition.h"
#include "tables/chosen_values.h"
#include "tables/device_tables.h"

#include <cstddef>
#include <list>
#include <map>
#include <span>
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

    /// What the lists' own clauses have selected so far of every parameter of a group, in order.
    std::span<const Selection> ofGroup(ParameterMap::Group group) const;

    /// What their items have selected so far of the parameter at a place in the map, in order.
    std::span<const Selection> ofItem(std::size_t place) const;

private:
    /// The values that a clause gives to the dimensions it names, by index name.
    using ClauseValues = std::map<std::string_view, const ChosenValues*>;

    void addClause(const IndexSpec& clause);
    void addItem(const PresetItem& item);
    ClauseValues clauseValues(const IndexSpec& clause);
    static void apply(const ClauseValues& values, const IndexNames& indexNames,
                      std::vector<Selection>& selections);
    static bool agrees(const IndexSpec& clause, const IndexNames& indexNames);

    const IndexTable& indices_;
    const ParameterMap& candidates_;
    std::list<ChosenValues> values_; ///< what the selections point to; a list never moves them
    std::map<ParameterMap::Group, std::vector<Selection>> ofGroup_;
    std::map<std::size_t, std::vector<Selection>> ofItem_;
};

} // namespace morvane
