// Checks a translate section against the system parameters.
#pragma once

#include "presetdef/preset_parse_result.h"
#include "presetdef/translate_section.h"

namespace morvane {

class SystemParameterTable;

/// Checks the removed lists, then the mappings, and stops at the first failure, about which it
/// writes a message to standard output. From clauses are not checked: what they name is gone.
///
/// @return PARSE_PRESET_OK or the failure.
PresetParseResult validateTranslateSection(const TranslateSection& section,
                                           const SystemParameterTable& parameters);

} // namespace morvane
