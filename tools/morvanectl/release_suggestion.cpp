#include "release_suggestion.h"

#include "output.h"
#include "suggestion.h"
#include "tables/condition.h"
#include "tables/device_tables.h"

#include <algorithm>
#include <sstream>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

// Whether a text can stand in a translate section, and means itself there.
bool canBeWritten(std::string_view text) {
    return !text.empty() && text.find_first_of("{},=\"# \t\f\v\r\n") == std::string_view::npos;
}

bool canBecome(const SystemParameter& parameter) {
    const bool isSettable =
        parameter.access != AccessType::ACCESS_INDEX && parameter.access != AccessType::ACCESS_WO;
    return isSettable && canBeWritten(parameter.name) &&
           parameter.name != "removed"; // which begins a list there
}

// The parameters that only the newer release has.
std::vector<std::string_view> newNames(const Release& older, const Release& newer) {
    std::vector<std::string_view> names;
    for (const auto& [name, parameter] : newer.definitions.parameters) {
        if (canBecome(parameter) && older.definitions.parameters.find(name) == nullptr)
            names.push_back(name);
    }
    return names;
}

// The pairs of an index mapping: old indices stay with their names, others get their first value.
// Empty if one cannot be written.
std::string pairsFor(const SystemParameter& before, const SystemParameter& after,
                     const IndexTable& indices) {
    std::vector<std::string_view> old;
    for (const auto& dimension : before.indices)
        old.push_back(dimension.indexName());
    std::string pairs;
    for (const auto& dimension : after.indices) {
        const auto name = dimension.indexName();
        const auto position = std::find(old.begin(), old.end(), name);
        const auto values = indices.find(name);
        std::string element;
        if (position != old.end()) {
            element = "idx::" + std::to_string(position - old.begin());
            *position = {}; // another one of this name is the next
        } else if (values != indices.end() && !values->second.empty()) {
            element = values->second.front();
        }
        if (!canBeWritten(element) || !canBeWritten(name))
            return {};
        pairs.append(pairs.empty() ? "" : ", ").append(name).append(" = ").append(element);
    }
    return pairs;
}

} // namespace

void TranslationSuggestion::add(const ReleaseReport& report, const Release& older) {
    auto candidates = newNames(older, newer_);
    for (const auto& [before, after] : renamed_)
        std::erase(candidates, after);
    for (const auto& row : report.rows) {
        const auto* const before = older.definitions.parameters.find(row.parameter);
        const auto variant = row.places.front().variant;
        if (row.fate == Fate::unlisted) {
            addName(row.parameter, report, older, candidates);
            const auto guess = renamed_.find(row.parameter);
            if (guess != renamed_.end())
                addTemplate(*before, guess->second, variant, older);
        } else if (row.fate == Fate::unmapped) {
            addTemplate(*before, row.newName, variant, older);
        }
    }
}

void TranslationSuggestion::addName(const std::string& name, const ReleaseReport& report,
                                    const Release& older,
                                    std::vector<std::string_view>& candidates) {
    if (!canBeWritten(name) || removed_.contains(name) || renamed_.contains(name))
        return;
    auto guess = nearest(name, candidates);
    if (guess.empty() || !isWhereLost(guess, name, report, older)) {
        removed_.insert(name);
        return;
    }
    std::erase(candidates, guess);
    renamed_.emplace(name, std::move(guess));
}

// Whether the new parameter is on all variants on which the older one is lost.
bool TranslationSuggestion::isWhereLost(std::string_view newName, std::string_view lost,
                                        const ReleaseReport& report, const Release& older) const {
    const auto& parameters = newer_.definitions.parameters;
    const auto& conditions = parameters.find(newName)->ctrlValid;
    return std::all_of(report.rows.begin(), report.rows.end(), [&](const ReleaseRow& row) {
        const bool isAboutIt = row.fate == Fate::unlisted && row.parameter == lost;
        return !isAboutIt ||
               std::all_of(row.places.begin(), row.places.end(), [&](const auto& place) {
                   return conditionsHold(conditions, parameters,
                                         *argumentsIn(newer_, older.variants[place.variant]));
               });
    });
}

void TranslationSuggestion::addTemplate(const SystemParameter& before, std::string_view newName,
                                        std::size_t variant, const Release& older) {
    const auto& parameters = newer_.definitions.parameters;
    const auto& after = *parameters.find(newName);
    const auto count = before.indices.size();
    if (count == after.indices.size() || after.indices.empty() || !canBecome(after))
        return;
    const auto indices =
        PresetGenerate::indexTable(parameters, *argumentsIn(newer_, older.variants[variant]));
    auto pairs = pairsFor(before, after, indices);
    if (!pairs.empty())
        templates_.try_emplace({std::string(newName), count}, std::move(pairs));
}

std::string TranslationSuggestion::text() const {
    std::ostringstream text;
    if (!removed_.empty())
        text << "translate { removed { "
             << joined(std::vector(removed_.begin(), removed_.end()), ", ") << " } }\n";
    if (!renamed_.empty())
        text << "# New names, guessed from the old ones.\n";
    for (const auto& [before, after] : renamed_)
        text << "translate { " << after << " { from { " << before << " } } }\n";
    if (!templates_.empty())
        text << "# New indices; what is not idx:: and a number is guessed: the first value.\n";
    for (const auto& [place, pairs] : templates_) {
        const auto& [name, count] = place;
        text << "translate { " << name << " { index " << count << " { " << pairs << " } } }\n";
    }
    return text.str();
}

} // namespace morvane::ctl
