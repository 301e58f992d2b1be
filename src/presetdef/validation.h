// Checks the preset definitions against the system parameters. Each check stops at the first
// failure.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace morvane {

class SystemParameterTable;

/// A record that names what it may not name.
struct InvalidRecord {
    std::uint32_t line = 0; ///< where the record began
    std::string_view name;  ///< that is at fault, borrowed from the definitions
    std::string text;       ///< of the report
};

/// Checks the removed lists, then the mappings. From clauses are not checked: what they name is
/// gone. Reports the failure on standard output.
///
/// @return PARSE_PRESET_OK or the failure.
PresetParseResult validateTranslateSection(const TranslateSection& section,
                                           const SystemParameterTable& parameters);

/// Checks the translate sections, then the presets. Reports the failure on standard output.
///
/// @return PARSE_PRESET_OK or the failure.
PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters);

/// The same without the report.
///
/// @param invalid receives the record that is at fault.
PresetParseResult validatePresetDefinitions(const PresetDefinitions& definitions,
                                            const SystemParameterTable& parameters,
                                            InvalidRecord& invalid);

} // namespace morvane
