// Checks the preset definitions against the system parameters.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

namespace morvane {

class SystemParameterTable;

/// Checks the translate sections, then the presets, and stops at the first failure, about which it
/// writes a message to standard output.
///
/// @return PARSE_PRESET_OK or the failure.
PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters);

} // namespace morvane
