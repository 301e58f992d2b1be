// Checks the preset definitions against the system parameters. Each check stops at the first
// failure, which it reports on standard output.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

namespace morvane {

class SystemParameterTable;

/// Checks the removed lists, then the mappings. From clauses are not checked: what they name is
/// gone.
///
/// @return PARSE_PRESET_OK or the failure.
PresetParseResult validateTranslateSection(const TranslateSection& section,
                                           const SystemParameterTable& parameters);

/// Checks the translate sections, then the presets.
///
/// @return PARSE_PRESET_OK or the failure.
PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters);

} // namespace morvane
