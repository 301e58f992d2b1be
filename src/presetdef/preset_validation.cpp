#include "presetdef/preset_validation.h"

#include "paramdef/system_parameter.h"
#include "presetdef/translate_validation.h"
#include "presetdef/validation_report.h"

namespace morvane {

using enum PresetParseResult;

namespace {

bool isIndex(const SystemParameterTable& parameters, const std::string& name) {
    const auto* const parameter = parameters.find(name);
    return parameter != nullptr && parameter->access == AccessType::ACCESS_INDEX;
}

bool fits(AccessType access, PresetList::Access listAccess) {
    if (listAccess == PresetList::Access::rw)
        return access == AccessType::ACCESS_RW;
    return access == AccessType::ACCESS_RO || access == AccessType::ACCESS_ROSTRICT;
}

// Checks that every selector of the clause names a defined index, and, in an item's clause, one of
// that parameter's own. `parameter` is null in a clause of the list's own.
PresetParseResult validateClause(const IndexSpec& clause, const SystemParameter* parameter,
                                 const SystemParameterTable& parameters) {
    for (const auto& [indexName, isNot, values] : clause.selectors) {
        if (!isIndex(parameters, indexName))
            return reportInvalid(clause.line, indexName + " - is an undefined system index",
                                 PARSE_PRESET_INVALID_INDEX);
        if (parameter == nullptr || parameter->hasIndex(indexName))
            continue;
        return reportInvalid(clause.line,
                             indexName + " - is not defined as an index for the parameter " +
                                 parameter->name,
                             PARSE_PRESET_INVALID_INDEX);
    }
    return PARSE_PRESET_OK;
}

// The messages about an item begin with a blank, the others do not.
PresetParseResult validateItem(const PresetItem& item, PresetList::Access access,
                               const SystemParameterTable& parameters) {
    const auto* const parameter = parameters.find(item.name);
    const auto subject = " " + item.name;
    if (parameter == nullptr)
        return reportInvalid(item.line, subject + " - is an undefined system parameter",
                             PARSE_PRESET_ACCESS_ERR);
    if (!fits(parameter->access, access))
        return reportInvalid(
            item.line,
            subject + " - does not have the correct access type for its include/exclude list",
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
