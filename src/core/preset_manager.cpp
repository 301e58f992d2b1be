#include "core/preset_manager.h"

#include "core/definitions.h"
#include "tables/preset_keys.h"

namespace morvane {

PresetManager::PresetManager(const std::string& paramDefPath, const std::string& presetDefPath,
                             const SystemArguments& arguments) {
    if (const auto definitions =
            readDefinitions(paramDefPath, presetDefPath, KeptAttributes::ofStartUp))
        derive(*definitions, arguments);
}

PresetManager::PresetManager(const Definitions& definitions, const SystemArguments& arguments) {
    derive(definitions, arguments);
}

void PresetManager::derive(const Definitions& definitions, const SystemArguments& arguments) {
    const auto& [parameters, presets] = definitions;
    indices_ = PresetGenerate::indexTable(parameters, arguments);
    readOnly_ = PresetGenerate::parameterMap(parameters, arguments, AccessSelector::readOnly);
    readWrite_ = PresetGenerate::parameterMap(parameters, arguments, AccessSelector::readWrite);
    for (const auto& section : presets.translateSections)
        PresetGenerate::addTranslation(section, readWrite_, readOnly_, translation_);
    auto keySets = PresetGenerate::keySets(indices_, readWrite_, readOnly_, presets.presets);
    for (std::size_t i = 0; i < keySets.size(); ++i) {
        if (!keySets[i].empty()) // the first of each name stays
            presets_.try_emplace(std::string(presets.presets[i].name), std::move(keySets[i]));
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
    return readOnly_.find(name).has_value();
}

bool PresetManager::isParameter(std::string_view name) const {
    return isReadOnly(name) || readWrite_.find(name).has_value();
}

} // namespace morvane
