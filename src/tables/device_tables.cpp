#include "tables/device_tables.h"

#include "paramdef/system_parameter.h"
#include "tables/condition.h"
#include "tables/valid_values.h"
#include "text/number.h"

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
    for (const auto& [name, parameter] : parameters) {
        if (!isSelected(parameter.access, selector) ||
            !conditionsHold(parameter.ctrlValid, parameters, arguments))
            continue;
        IndexNames indexNames;
        for (const auto& dimension : parameter.indices)
            indexNames.emplace_back(dimension.indexName());
        map.emplace_hint(map.end(), name, std::move(indexNames));
    }
    return map;
}

} // namespace morvane
