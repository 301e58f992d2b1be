// Definitions for tests, written in the languages of the definition files.
#pragma once

#include "paramdef/system_parameter.h"
#include "presetdef/preset_definition.h"

#include <string_view>

namespace morvane::test {

/// The table that a parameter definition file of this content gives. Fails the test on an error.
SystemParameterTable parametersOf(std::string_view text);

/// The records that a preset definition file of this content gives. Fails the test on an error and
/// on a block that is left open.
PresetDefinitions presetDefinitionsOf(std::string_view text);

} // namespace morvane::test
