// What the offline subcommands read: the definitions, with the tables derived from them for one
// variant of the device.
#pragma once

#include "core/definitions.h"
#include "core/preset_manager.h"
#include "settings.h"

#include <optional>
#include <string>

namespace morvane::ctl {

struct Variant {
    Definitions definitions;
    SystemArguments arguments;
    PresetManager manager;
};

/// Reads the definition files, and makes the tables for the variant of the settings. What is wrong
/// in the files is written to standard error.
/// @return nothing if they cannot be used.
std::optional<Variant> readVariant(const Settings& settings);

/// As above, but fails with a message if the preset of the settings does not exist on this variant.
std::optional<Variant> readVariantWithPreset(const Settings& settings);

} // namespace morvane::ctl
