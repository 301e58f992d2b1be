#include "tables/device_tables.h"

#include "paramdef/system_parameter.h"
#include "tables/condition.h"
#include "tables/valid_values.h"
#include "text/number.h"

#include <cassert>
#include <set>
#include <utility>

namespace morvane {

namespace {

IndexValues indexValues(const SystemParameter& index, const SystemParameterTable& parameters,
                        const SystemArguments& arguments) {
    IndexValues values;
    for (auto& value : validValues(index, parameters, arguments)) {
        if (const auto* const span = std::get_if<NumberSpan>(&value))
            appendNumbers(span->low, span->high, values);
        else
            values.push_back(std::get<std::string>(std::move(value)));
    }
    return values;
}

bool isSelected(AccessType access, AccessSelector selector) {
    switch (selector) {
    case AccessSelector::readOnly:
        return access == AccessType::ACCESS_RO || access == AccessType::ACCESS_ROSTRICT;
    case AccessSelector::writeOnly:
        return access == AccessType::ACCESS_WO;
    case AccessSelector::readWrite:
        return access == AccessType::ACCESS_RW;
    }
    return false;
}

} // namespace

ParameterMap::ParameterMap(
    std::initializer_list<std::pair<std::string_view, IndexNames>> parameters) {
    for (const auto& [name, indexNames] : parameters)
        append(name, indexNames);
}

void ParameterMap::append(std::string_view name, const IndexNames& indexNames) {
    assert(names_.empty() || names_[names_.size() - 1].view() < name);
    groupOf_.push_back(groupWith(indexNames));
    names_.append(name);
}

ParameterMap::Group ParameterMap::groupWith(const IndexNames& indexNames) {
    const auto number = static_cast<Group>(groups_.size());
    const auto [group, isNew] = numbers_.try_emplace(indexNames, number);
    if (isNew) {
        groups_.push_back(indexNames);
        for (const auto& indexName : std::set<std::string>(indexNames.begin(), indexNames.end()))
            groupsWith_[indexName].push_back(number);
    }
    return group->second;
}

std::optional<std::size_t> ParameterMap::find(std::string_view name) const {
    const auto place = names_.lowerBound(name);
    if (place == names_.size() || names_[place].view() != name)
        return std::nullopt;
    return place;
}

std::span<const ParameterMap::Group> ParameterMap::groupsWith(std::string_view indexName) const {
    const auto groups = groupsWith_.find(indexName);
    return groups == groupsWith_.end() ? std::span<const Group>() : groups->second;
}

// Counts in 64 bits: a span may end at the largest number.
void appendNumbers(std::int32_t low, std::int32_t high, IndexValues& values) {
    for (std::int64_t number = low; number <= high; ++number)
        values.push_back(decimalText(static_cast<std::int32_t>(number)));
}

IndexTable PresetGenerate::indexTable(const SystemParameterTable& parameters,
                                      const SystemArguments& arguments) {
    IndexTable table;
    for (const auto& [name, parameter] : parameters) {
        if (parameter.access == AccessType::ACCESS_INDEX &&
            conditionsHold(parameter.ctrlValid, parameters, arguments))
            table.emplace_hint(table.end(), name, indexValues(parameter, parameters, arguments));
    }
    return table;
}

ParameterMap PresetGenerate::parameterMap(const SystemParameterTable& parameters,
                                          const SystemArguments& arguments,
                                          AccessSelector selector) {
    ParameterMap map;
    IndexNames indexNames;
    for (const auto& [name, parameter] : parameters) {
        if (!isSelected(parameter.access, selector) ||
            !conditionsHold(parameter.ctrlValid, parameters, arguments))
            continue;
        indexNames.clear();
        for (const auto& dimension : parameter.indices)
            indexNames.emplace_back(dimension.indexName());
        map.append(name, indexNames);
    }
    return map;
}

} // namespace morvane
