#include "core/definitions.h"

#include "paramdef/param_def_file.h"
#include "presetdef/preset_def_file.h"
#include "presetdef/validation.h"

namespace morvane {

using enum PresetParseResult;

std::optional<Definitions> readDefinitions(const std::string& paramDefPath,
                                           const std::string& presetDefPath, KeptAttributes kept) {
    std::optional<Definitions> definitions(std::in_place);
    auto& [parameters, presets] = *definitions;
    if (readParamDefFile(paramDefPath.c_str(), &parameters, kept) != ParamDefResult::ok ||
        readPresetDefFile(presetDefPath.c_str(), &presets) != PARSE_PRESET_OK ||
        validatePresetDefinitions(presets, parameters) != PARSE_PRESET_OK)
        return std::nullopt;
    return definitions;
}

} // namespace morvane
