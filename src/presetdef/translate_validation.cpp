#include "presetdef/translate_validation.h"

#include "paramdef/system_parameter.h"
#include "presetdef/validation_report.h"

#include <set>
#include <string>
#include <string_view>

namespace morvane {

using enum PresetParseResult;

namespace {

PresetParseResult validateRemovedList(const RemovedList& list,
                                      const SystemParameterTable& parameters) {
    for (const auto& name : list.names) {
        if (parameters.find(name) != nullptr)
            return reportInvalid(
                list.line,
                name + " - In translate removed list, but still a defined system parameter",
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
                mapping.line, indexName + " - is not an index for the parameter " + parameter.name,
                PARSE_PRESET_INVALID_INDEX);
        missing.erase(found);
    }
    if (!missing.empty())
        return reportInvalid(mapping.line,
                             parameter.name + " - Missing indices from translate index mapping",
                             PARSE_PRESET_INVALID_RANGE);
    return PARSE_PRESET_OK;
}

PresetParseResult validateMapping(const TranslateMapping& mapping,
                                  const SystemParameterTable& parameters) {
    const auto* const parameter = parameters.find(mapping.newName);
    if (parameter == nullptr)
        return reportInvalid(mapping.line, mapping.newName + " - is an undefined system parameter",
                             PARSE_PRESET_ACCESS_ERR);
    for (const auto& indexMapping : mapping.indexMappings) {
        const auto result = validateIndexMapping(indexMapping, *parameter);
        if (result != PARSE_PRESET_OK)
            return result;
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

} // namespace morvane
