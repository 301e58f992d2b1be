// The definitions and what they come to on one variant of the device, for the offline subcommands.
#pragma once

#include "core/definitions.h"
#include "core/preset_manager.h"
#include "settings.h"

#include <optional>

namespace morvane::ctl {

struct Variant {
    Definitions definitions;
    PresetManager manager;
};

/// Reads the definition files as the daemon does: errors in them are reported on standard output.
/// @return nothing if they cannot be used, which standard error says, too.
std::optional<Definitions> readBothFiles(const Settings& settings);

/// As above, with what they come to on the variant of the settings.
std::optional<Variant> readVariant(const Settings& settings);

/// As above, and says it if the preset of the settings does not exist on this variant.
std::optional<Variant> readVariantWithPreset(const Settings& settings);

} // namespace morvane::ctl
