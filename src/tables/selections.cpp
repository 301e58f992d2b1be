#include "tables/selections.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace morvane {

namespace {

// "not X" without values requires that there be no dimension X; every other selector requires one.
bool asksForAbsence(const IndexSelector& selector) {
    return selector.isNot && selector.values.kind == IndexValueSet::Kind::none;
}

bool hasIndex(const IndexNames& indexNames, std::string_view name) {
    return std::find(indexNames.begin(), indexNames.end(), name) != indexNames.end();
}

template <typename Map>
std::span<const Selection> selectionsOf(const Map& map, typename Map::key_type key) {
    const auto found = map.find(key);
    return found == map.end() ? std::span<const Selection>() : found->second;
}

} // namespace

void Selections::add(const PresetList& list) {
    for (const auto& clause : list.indexSpecs)
        addClause(clause);
    for (const auto& item : list.items)
        addItem(item);
}

std::span<const Selection> Selections::ofGroup(ParameterMap::Group group) const {
    return selectionsOf(ofGroup_, group);
}

std::span<const Selection> Selections::ofItem(std::size_t place) const {
    return selectionsOf(ofItem_, place);
}

// Only the groups that have the rarest of the required indices can agree with the clause.
void Selections::addClause(const IndexSpec& clause) {
    const auto values = clauseValues(clause);
    const auto& groups = candidates_.groups();
    std::optional<std::span<const ParameterMap::Group>> rarest;
    for (const auto& selector : clause.selectors) {
        const auto having = candidates_.groupsWith(selector.indexName);
        if (!asksForAbsence(selector) && (!rarest || having.size() < rarest->size()))
            rarest = having;
    }
    const auto count = rarest ? rarest->size() : groups.size();
    for (std::size_t i = 0; i < count; ++i) {
        const auto group = rarest ? (*rarest)[i] : static_cast<ParameterMap::Group>(i);
        if (agrees(clause, groups[group]))
            apply(values, groups[group], ofGroup_[group]);
    }
}

void Selections::addItem(const PresetItem& item) {
    const auto place = candidates_.find(item.name);
    if (!place)
        return;
    const auto& indexNames = candidates_.indexNames(*place);
    if (item.indexSpecs.empty())
        ofItem_[*place].emplace_back(indexNames.size(), nullptr);
    for (const auto& clause : item.indexSpecs) {
        if (agrees(clause, indexNames))
            apply(clauseValues(clause), indexNames, ofItem_[*place]);
    }
}

// Of two selectors for one index, the last counts.
Selections::ClauseValues Selections::clauseValues(const IndexSpec& clause) {
    ClauseValues values;
    for (const auto& selector : clause.selectors) {
        if (asksForAbsence(selector))
            continue;
        const auto index = indices_.find(selector.indexName);
        values_.emplace_back(selector, index == indices_.end() ? nullptr : &index->second);
        values[selector.indexName] = &values_.back();
    }
    return values;
}

bool Selections::agrees(const IndexSpec& clause, const IndexNames& indexNames) {
    if (clause.none)
        return indexNames.empty();
    return std::all_of(
        clause.selectors.begin(), clause.selectors.end(), [&](const IndexSelector& selector) {
            return hasIndex(indexNames, selector.indexName) != asksForAbsence(selector);
        });
}

// Selects the instances that a clause describes which agrees with the indices, if it describes any.
void Selections::apply(const ClauseValues& values, const IndexNames& indexNames,
                       std::vector<Selection>& selections) {
    Selection selection;
    for (const auto& indexName : indexNames) {
        const auto named = values.find(indexName);
        const auto* const chosen = named == values.end() ? nullptr : named->second;
        if (chosen != nullptr && chosen->empty())
            return;
        selection.push_back(chosen);
    }
    selections.push_back(std::move(selection));
}

} // namespace morvane
