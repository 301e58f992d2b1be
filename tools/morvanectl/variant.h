// What the offline subcommands read: the definitions, with the tables derived from them for one
// variant of the device, or with the variants that they are about.
#pragma once

#include "core/definitions.h"
#include "core/preset_manager.h"
#include "described_variants.h"
#include "settings.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {

struct Variant {
    Definitions definitions;
    SystemArguments arguments;
    PresetManager manager;
};

struct DescribedDevice {
    Definitions definitions;
    std::vector<DescribedVariant> variants; ///< at least one
};

/// Reads the definition files, and what describes the variants that the settings ask for. What is
/// wrong in the files is written to standard error.
/// @return nothing if they cannot be used.
std::optional<DescribedDevice> readDevice(const Settings& settings);

/// Reads the definition files, and makes the tables for the variant of the settings. What is wrong
/// in the files is written to standard error.
/// @return nothing if they cannot be used.
std::optional<Variant> readVariant(const Settings& settings);

/// As above, but fails with a message if the preset of the settings does not exist on this variant.
std::optional<Variant> readVariantWithPreset(const Settings& settings);

/// Says that the preset of the settings does not exist.
/// @param where such as "this variant".
ExitStatus failWithoutPreset(const Settings& settings, const std::string& where);

} // namespace morvane::ctl
