#include "core/preset_manager.h"

#include "engine/tables/preset_generate.h"
#include "paramdef/param_def_file.h"
#include "paramdef/system_parameter.h"
#include "presetdef/preset_def_file.h"
#include "presetdef/preset_validation.h"

namespace morvane {

PresetManager::PresetManager(const std::string& paramDefPath, const std::string& presetDefPath,
                             const SystemArguments& arguments) {
    SystemParameterTable parameters;
    if (readParamDefFile(paramDefPath.c_str(), &parameters) != ParamDefResult::ok)
        return;
    PresetDefinitions definitions;
    if (readPresetDefFile(presetDefPath.c_str(), &definitions) !=
        PresetParseResult::PARSE_PRESET_OK)
        return;
    if (validatePresetDefinitions(definitions, parameters) != PresetParseResult::PARSE_PRESET_OK)
        return;
    buildTables(parameters, definitions, arguments);
}

void PresetManager::buildTables(const SystemParameterTable& parameters,
                                const PresetDefinitions& definitions,
                                const SystemArguments& arguments) {
    indices_ = PresetGenerate::indexTable(parameters, arguments);
    readOnly_ = PresetGenerate::parameterMap(parameters, arguments, AccessSelector::readOnly);
    readWrite_ = PresetGenerate::parameterMap(parameters, arguments, AccessSelector::readWrite);
    for (const auto& section : definitions.translateSections)
        PresetGenerate::addTranslation(section, readWrite_, readOnly_, translation_);
    for (const auto& preset : definitions.presets) {
        auto keys = PresetGenerate::keySet(indices_, readWrite_, readOnly_, preset);
        if (!keys.empty())
            presets_.try_emplace(preset.name, std::move(keys)); // the first of a name stays
    }
}

bool PresetManager::is_preset(std::string_view presetName) const {
    return findPreset(presetName) != nullptr;
}

bool PresetManager::in_preset(std::string_view key, std::string_view presetName) const {
    const auto* const keys = findPreset(presetName);
    return keys != nullptr && keys->contains(key);
}

const KeySet* PresetManager::findPreset(std::string_view presetName) const {
    const auto preset = presets_.find(presetName);
    return preset == presets_.end() ? nullptr : &preset->second;
}

bool PresetManager::isReadOnly(std::string_view name) const {
    return readOnly_.contains(name);
}

bool PresetManager::isParameter(std::string_view name) const {
    return isReadOnly(name) || readWrite_.contains(name);
}

} // namespace morvane
