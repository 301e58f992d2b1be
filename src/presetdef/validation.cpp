#include "presetdef/validation.h"

#include "paramdef/system_parameter.h"
#include "text/diagnostic.h"

#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

namespace morvane {

using enum PresetParseResult;

namespace {

// Writes the message about a record that is wrong. Returns `result`, so that a check can end with
// the report.
PresetParseResult reportInvalid(std::uint32_t line, std::initializer_list<std::string_view> text,
                                PresetParseResult result) {
    auto message = "Preset Definition Error on line " + std::to_string(line) + ".\n";
    for (const auto part : text)
        message += part;
    printAtOnce(message + "\n");
    return result;
}

PresetParseResult validateRemovedList(const RemovedList& list,
                                      const SystemParameterTable& parameters) {
    for (const auto& name : list.names) {
        if (parameters.find(name) != nullptr)
            return reportInvalid(
                list.line,
                {name, " - In translate removed list, but still a defined system parameter"},
                PARSE_PRESET_SYNTAX);
    }
    return PARSE_PRESET_OK;
}

// Every index of the parameter must be named exactly once.
PresetParseResult validateIndexMapping(const IndexMapping& mapping,
                                       const SystemParameter& parameter) {
    std::multiset<std::string_view> missing;
    for (const auto& dimension : parameter.indices)
        missing.insert(dimension.indexName());
    for (const auto& [indexName, text] : mapping.pairs) {
        const auto found = missing.find(indexName);
        if (found == missing.end())
            return reportInvalid(
                mapping.line, {indexName, " - is not an index for the parameter ", parameter.name},
                PARSE_PRESET_INVALID_INDEX);
        missing.erase(found);
    }
    if (!missing.empty())
        return reportInvalid(mapping.line,
                             {parameter.name, " - Missing indices from translate index mapping"},
                             PARSE_PRESET_INVALID_RANGE);
    return PARSE_PRESET_OK;
}

PresetParseResult validateMapping(const TranslateMapping& mapping,
                                  const SystemParameterTable& parameters) {
    const auto* const parameter = parameters.find(mapping.newName);
    if (parameter == nullptr)
        return reportInvalid(mapping.line, {mapping.newName, " - is an undefined system parameter"},
                             PARSE_PRESET_ACCESS_ERR);
    for (const auto& indexMapping : mapping.indexMappings) {
        const auto result = validateIndexMapping(indexMapping, *parameter);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    return PARSE_PRESET_OK;
}

bool isIndex(const SystemParameterTable& parameters, std::string_view name) {
    const auto* const parameter = parameters.find(name);
    return parameter != nullptr && parameter->access == AccessType::ACCESS_INDEX;
}

bool fits(AccessType access, PresetList::Access listAccess) {
    if (listAccess == PresetList::Access::rw)
        return access == AccessType::ACCESS_RW;
    return access == AccessType::ACCESS_RO || access == AccessType::ACCESS_ROSTRICT;
}

// Checks that every selector of the clause names a defined index and, in an item's clause, an index
// of that parameter. `parameter` is null for the list's own clauses.
PresetParseResult validateClause(const IndexSpec& clause, const SystemParameter* parameter,
                                 const SystemParameterTable& parameters) {
    for (const auto& [indexName, isNot, values] : clause.selectors) {
        if (!isIndex(parameters, indexName))
            return reportInvalid(clause.line, {indexName, " - is an undefined system index"},
                                 PARSE_PRESET_INVALID_INDEX);
        if (parameter == nullptr || parameter->hasIndex(indexName))
            continue;
        return reportInvalid(
            clause.line,
            {indexName, " - is not defined as an index for the parameter ", parameter->name},
            PARSE_PRESET_INVALID_INDEX);
    }
    return PARSE_PRESET_OK;
}

// The messages about an item begin with a blank, the others do not.
PresetParseResult validateItem(const PresetItem& item, PresetList::Access access,
                               const SystemParameterTable& parameters) {
    const auto* const parameter = parameters.find(item.name);
    const auto subject = std::string(" ").append(item.name);
    if (parameter == nullptr)
        return reportInvalid(item.line, {subject, " - is an undefined system parameter"},
                             PARSE_PRESET_ACCESS_ERR);
    if (!fits(parameter->access, access))
        return reportInvalid(
            item.line,
            {subject, " - does not have the correct access type for its include/exclude list"},
            PARSE_PRESET_INC_EXC_ACCESS_ERR);
    for (const auto& clause : item.indexSpecs) {
        const auto result = validateClause(clause, parameter, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    return PARSE_PRESET_OK;
}

PresetParseResult validateList(const PresetList& list, const SystemParameterTable& parameters) {
    for (const auto& clause : list.indexSpecs) {
        const auto result = validateClause(clause, nullptr, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    for (const auto& item : list.items) {
        const auto result = validateItem(item, list.access, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    return PARSE_PRESET_OK;
}

PresetParseResult validatePreset(const PresetDefinition& preset,
                                 const SystemParameterTable& parameters) {
    for (const auto* const lists : {&preset.includeLists, &preset.excludeLists}) {
        for (const auto& list : *lists) {
            const auto result = validateList(list, parameters);
            if (result != PARSE_PRESET_OK)
                return result;
        }
    }
    return PARSE_PRESET_OK;
}

} // namespace

PresetParseResult validateTranslateSection(const TranslateSection& section,
                                           const SystemParameterTable& parameters) {
    for (const auto& list : section.removedLists) {
        const auto result = validateRemovedList(list, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    for (const auto& mapping : section.mappings) {
        const auto result = validateMapping(mapping, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    return PARSE_PRESET_OK;
}

PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters) {
    for (const auto& section : definitions.translateSections) {
        const auto result = validateTranslateSection(section, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    for (const auto& preset : definitions.presets) {
        const auto result = validatePreset(preset, parameters);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    return PARSE_PRESET_OK;
}

} // namespace morvane
