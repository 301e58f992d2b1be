#include "tables/coverage.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace morvane {

namespace {

/// Instances of a parameter: for each dimension the chosen values.
using Choice = std::vector<ChosenValues>;

// The choices that the selections stand for, less those that choose nothing because a dimension has
// no value. Said before a huge range is listed.
std::vector<Choice> choicesOf(const std::vector<Selection>& selections,
                              const std::vector<const IndexValues*>& indexValues) {
    std::vector<Choice> choices;
    for (const auto& selection : selections) {
        Choice choice;
        for (std::size_t i = 0; i < selection.size(); ++i)
            choice.push_back(selection[i] != nullptr ? *selection[i]
                                                     : ChosenValues::allOf(*indexValues[i]));
        if (std::none_of(choice.begin(), choice.end(),
                         [](const ChosenValues& values) { return values.empty(); }))
            choices.push_back(std::move(choice));
    }
    return choices;
}

// The choices with one dimension united where all others are equal.
std::vector<Choice> unitedIn(std::size_t dimension, const std::vector<Choice>& choices) {
    std::map<Choice, std::vector<const ChosenValues*>> byOthers;
    for (const auto& choice : choices) {
        auto others = choice;
        others[dimension] = {};
        byOthers[std::move(others)].push_back(&choice[dimension]);
    }
    std::vector<Choice> result;
    for (const auto& [others, values] : byOthers) {
        result.push_back(others);
        result.back()[dimension] = ChosenValues::united(values);
    }
    return result;
}

// Where each value stands in the index; nothing if the index does not have one of them.
std::optional<std::vector<std::uint32_t>> placesIn(const SortedValues& index,
                                                   const ChosenValues& values) {
    std::vector<std::uint32_t> places;
    for (const auto& value : values.list()) {
        const auto place = index.find(value);
        if (!place)
            return std::nullopt;
        places.push_back(static_cast<std::uint32_t>(*place));
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

// What is covered if every dimension has these places in its index.
Coverage partOf(const Dimensions& dimensions, Places places) {
    bool all = true;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i].empty())
            return {};
        all = all && places[i].size() == dimensions[i]->texts().size();
    }
    return all ? Coverage{.all = true} : Coverage{.part = std::move(places)};
}

Coverage including(const std::vector<Choice>& choices, const Dimensions& dimensions) {
    if (choices.size() == 1) {
        Places places;
        for (std::size_t i = 0; i < dimensions.size(); ++i) {
            auto found = placesIn(*dimensions[i], choices.front()[i]);
            if (!found)
                break;
            places.push_back(*std::move(found));
        }
        if (places.size() == dimensions.size())
            return partOf(dimensions, std::move(places));
    }
    Coverage coverage;
    for (const auto& choice : choices) {
        WrittenValues values;
        for (const auto& chosen : choice)
            values.push_back(chosen.list());
        coverage.written.push_back(std::move(values));
    }
    return coverage;
}

bool isRestricted(const Selection& selection) {
    return std::any_of(selection.begin(), selection.end(),
                       [](const ChosenValues* chosen) { return chosen != nullptr; });
}

// What is left after applying the exclusions, dimension by dimension: without value 1 of its first
// dimension, a parameter loses every key whose first index is 1, whatever the second.
Coverage excluding(const std::vector<Selection>& exclusions, const Dimensions& dimensions) {
    if (!std::all_of(exclusions.begin(), exclusions.end(), isRestricted))
        return {};
    Places left(dimensions.size());
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        std::vector<const ChosenValues*> excluded;
        for (const auto& exclusion : exclusions) {
            if (exclusion[i] != nullptr)
                excluded.push_back(exclusion[i]);
        }
        const auto all = ChosenValues::united(excluded);
        const auto& values = dimensions[i]->texts();
        for (std::size_t place = 0; place < values.size(); ++place) {
            if (!all.contains(values[place]))
                left[i].push_back(static_cast<std::uint32_t>(place));
        }
    }
    return partOf(dimensions, std::move(left));
}

} // namespace

ListCoverage::ListCoverage(Lists kind, const std::vector<PresetList>& lists,
                           const IndexTable& indices, const ParameterMap& parameters)
    : kind_(kind),
      indices_(indices),
      parameters_(parameters),
      selections_(indices, parameters) {
    for (const auto& list : lists) {
        all_ = list.all;
        if (all_)
            break;
        selections_.add(list);
    }
    unnamed_.all = all_ == (kind_ == Lists::include);
}

const Coverage& ListCoverage::of(std::size_t place, const Dimensions& dimensions) {
    if (all_ && kind_ == Lists::exclude)
        return unnamed_;
    const auto ofItem = selections_.ofItem(place);
    const auto group = parameters_.group(place);
    const auto ofGroup = selections_.ofGroup(group);
    if (!ofItem.empty())
        return item_ = covered(place, ofGroup, ofItem, dimensions);
    if (ofGroup.empty())
        return unnamed_;
    const auto known = group_.find(group);
    return known != group_.end()
               ? known->second
               : group_.emplace(group, covered(place, ofGroup, {}, dimensions)).first->second;
}

Coverage ListCoverage::covered(std::size_t place, std::span<const Selection> ofGroup,
                               std::span<const Selection> ofItem,
                               const Dimensions& dimensions) const {
    std::vector<Selection> selections(ofGroup.begin(), ofGroup.end());
    selections.insert(selections.end(), ofItem.begin(), ofItem.end());
    if (kind_ == Lists::exclude)
        return excluding(selections, dimensions);
    if (all_)
        selections.emplace_back(dimensions.size(), nullptr);
    if (selections.size() == 1 && !isRestricted(selections.front()))
        return {.all = true};
    std::vector<const IndexValues*> indexValues;
    for (const auto& indexName : parameters_.indexNames(place))
        indexValues.push_back(&indices_.find(indexName)->second);
    auto choices = choicesOf(selections, indexValues);
    for (std::size_t i = 0; i < dimensions.size() && choices.size() > 1; ++i)
        choices = unitedIn(i, choices);
    return including(choices, dimensions);
}

} // namespace morvane
