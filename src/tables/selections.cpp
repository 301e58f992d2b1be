#include "tables/selections.h"

#include <algorithm>
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

} // namespace

void Selections::add(const PresetList& list) {
    for (const auto& clause : list.indexSpecs) {
        const auto values = clauseValues(clause);
        for (const auto& candidate : candidates_)
            apply(clause, values, candidate);
    }
    for (const auto& item : list.items)
        addItem(item);
}

void Selections::addItem(const PresetItem& item) {
    const auto candidate = candidates_.find(item.name);
    if (candidate == candidates_.end())
        return;
    if (item.indexSpecs.empty())
        byParameter_[candidate->first].emplace_back(candidate->second.size(), nullptr);
    for (const auto& clause : item.indexSpecs)
        apply(clause, clauseValues(clause), *candidate);
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

// Selects the instances of the candidate that the clause describes, if it describes any.
void Selections::apply(const IndexSpec& clause, const ClauseValues& values,
                       const Candidate& candidate) {
    const auto& [name, indexNames] = candidate;
    if (!agrees(clause, indexNames))
        return;
    Selection selection;
    for (const auto& indexName : indexNames) {
        const auto named = values.find(indexName);
        const auto* const chosen = named == values.end() ? nullptr : named->second;
        if (chosen != nullptr && chosen->empty())
            return;
        selection.push_back(chosen);
    }
    byParameter_[name].push_back(std::move(selection));
}

} // namespace morvane
