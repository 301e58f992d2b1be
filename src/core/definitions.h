// The two definition files as written, for every variant of the device.
#pragma once

#include "paramdef/param_def_parser.h"
#include "paramdef/system_parameter.h"
#include "presetdef/preset_definition.h"

#include <optional>
#include <string>

namespace morvane {

struct Definitions {
    SystemParameterTable parameters;
    PresetDefinitions presets;
};

/// Reads both definition files and checks the second against the first. Stops at the first error,
/// which is reported on standard output.
///
/// @param kept which attributes of the parameters to keep.
/// @return nothing if one of them cannot be used.
std::optional<Definitions> readDefinitions(const std::string& paramDefPath,
                                           const std::string& presetDefPath,
                                           KeptAttributes kept = KeptAttributes::all);

} // namespace morvane
