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

bool fits(AccessType access, PresetList::Access listAccess) {
    if (listAccess == PresetList::Access::rw)
        return access == AccessType::ACCESS_RW;
    return access == AccessType::ACCESS_RO || access == AccessType::ACCESS_ROSTRICT;
}

/// Checks the records of one file against the parameters. Each check ends with the first record
/// that is invalid, which it leaves in the one it was given.
class Validator {
public:
    Validator(const SystemParameterTable& parameters, InvalidRecord& invalid)
        : parameters_(parameters),
          invalid_(invalid) {}

    PresetParseResult checkSection(const TranslateSection& section) const {
        for (const auto& list : section.removedLists) {
            const auto result = checkRemovedList(list);
            if (result != PARSE_PRESET_OK)
                return result;
        }
        for (const auto& mapping : section.mappings) {
            const auto result = checkMapping(mapping);
            if (result != PARSE_PRESET_OK)
                return result;
        }
        return PARSE_PRESET_OK;
    }

    PresetParseResult checkPreset(const PresetDefinition& preset) const {
        for (const auto* const lists : {&preset.includeLists, &preset.excludeLists}) {
            for (const auto& list : *lists) {
                const auto result = checkList(list);
                if (result != PARSE_PRESET_OK)
                    return result;
            }
        }
        return PARSE_PRESET_OK;
    }

private:
    // Returns `result`, so that a check can end with what is wrong.
    PresetParseResult refuse(std::uint32_t line, std::string_view name,
                             std::initializer_list<std::string_view> text,
                             PresetParseResult result) const {
        invalid_ = {line, name, {}};
        for (const auto part : text)
            invalid_.text += part;
        return result;
    }

    PresetParseResult checkRemovedList(const RemovedList& list) const {
        for (const auto& name : list.names) {
            if (parameters_.find(name) != nullptr)
                return refuse(
                    list.line, name,
                    {name, " - In translate removed list, but still a defined system parameter"},
                    PARSE_PRESET_SYNTAX);
        }
        return PARSE_PRESET_OK;
    }

    PresetParseResult checkMapping(const TranslateMapping& mapping) const {
        const auto name = mapping.newName;
        const auto* const parameter = parameters_.find(name);
        if (parameter == nullptr)
            return refuse(mapping.line, name, {name, " - is an undefined system parameter"},
                          PARSE_PRESET_ACCESS_ERR);
        for (const auto& indexMapping : mapping.indexMappings) {
            const auto result = checkIndexMapping(indexMapping, *parameter, name);
            if (result != PARSE_PRESET_OK)
                return result;
        }
        return PARSE_PRESET_OK;
    }

    // Every index of the parameter must be named exactly once.
    PresetParseResult checkIndexMapping(const IndexMapping& mapping,
                                        const SystemParameter& parameter,
                                        std::string_view newName) const {
        std::multiset<std::string_view> missing;
        for (const auto& dimension : parameter.indices)
            missing.insert(dimension.indexName());
        for (const auto& [indexName, text] : mapping.pairs) {
            const auto found = missing.find(indexName);
            if (found == missing.end())
                return refuse(mapping.line, indexName,
                              {indexName, " - is not an index for the parameter ", newName},
                              PARSE_PRESET_INVALID_INDEX);
            missing.erase(found);
        }
        if (!missing.empty())
            return refuse(mapping.line, newName,
                          {newName, " - Missing indices from translate index mapping"},
                          PARSE_PRESET_INVALID_RANGE);
        return PARSE_PRESET_OK;
    }

    bool isIndex(std::string_view name) const {
        const auto* const parameter = parameters_.find(name);
        return parameter != nullptr && parameter->access == AccessType::ACCESS_INDEX;
    }

    // Checks that every selector of the clause names a defined index and, in an item's clause, an
    // index of that parameter. `parameter` is null for the list's own clauses.
    PresetParseResult checkClause(const IndexSpec& clause, const SystemParameter* parameter) const {
        for (const auto& selector : clause.selectors) {
            const auto name = selector.indexName;
            if (!isIndex(name))
                return refuse(clause.line, name, {name, " - is an undefined system index"},
                              PARSE_PRESET_INVALID_INDEX);
            if (parameter == nullptr || parameter->hasIndex(name))
                continue;
            return refuse(
                clause.line, name,
                {name, " - is not defined as an index for the parameter ", parameter->name},
                PARSE_PRESET_INVALID_INDEX);
        }
        return PARSE_PRESET_OK;
    }

    // The messages about an item begin with a blank, the others do not.
    PresetParseResult checkItem(const PresetItem& item, PresetList::Access access) const {
        const auto* const parameter = parameters_.find(item.name);
        if (parameter == nullptr)
            return refuse(item.line, item.name,
                          {" ", item.name, " - is an undefined system parameter"},
                          PARSE_PRESET_ACCESS_ERR);
        if (!fits(parameter->access, access))
            return refuse(item.line, item.name,
                          {" ", item.name,
                           " - does not have the correct access type for its include/exclude list"},
                          PARSE_PRESET_INC_EXC_ACCESS_ERR);
        for (const auto& clause : item.indexSpecs) {
            const auto result = checkClause(clause, parameter);
            if (result != PARSE_PRESET_OK)
                return result;
        }
        return PARSE_PRESET_OK;
    }

    PresetParseResult checkList(const PresetList& list) const {
        for (const auto& clause : list.indexSpecs) {
            const auto result = checkClause(clause, nullptr);
            if (result != PARSE_PRESET_OK)
                return result;
        }
        for (const auto& item : list.items) {
            const auto result = checkItem(item, list.access);
            if (result != PARSE_PRESET_OK)
                return result;
        }
        return PARSE_PRESET_OK;
    }

    const SystemParameterTable& parameters_;
    InvalidRecord& invalid_;
};

PresetParseResult reported(PresetParseResult result, const InvalidRecord& invalid) {
    if (result != PARSE_PRESET_OK)
        printAtOnce("Preset Definition Error on line " + std::to_string(invalid.line) + ".\n" +
                    invalid.text + "\n");
    return result;
}

} // namespace

PresetParseResult validateTranslateSection(const TranslateSection& section,
                                           const SystemParameterTable& parameters) {
    InvalidRecord invalid;
    return reported(Validator(parameters, invalid).checkSection(section), invalid);
}

PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters) {
    InvalidRecord invalid;
    return reported(validatePresetDefinitions(definitions, parameters, invalid), invalid);
}

PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters,
                                            InvalidRecord& invalid) {
    const Validator validator(parameters, invalid);
    for (const auto& section : definitions.translateSections) {
        const auto result = validator.checkSection(section);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    for (const auto& preset : definitions.presets) {
        const auto result = validator.checkPreset(preset);
        if (result != PARSE_PRESET_OK)
            return result;
    }
    return PARSE_PRESET_OK;
}

} // namespace morvane
