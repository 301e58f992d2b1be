// Loads the values of a preset data file, or the defaults of a preset, into the live parameters.
#pragma once

#include <string>

namespace morvane {

class PresetManager;
struct ParameterOperations;

/// Whether a load resets the keys of the preset that are not in the file to their defaults.
enum class Defaults {
    off,
    on
};

/// Sets the values that a preset data file has for keys of a preset, in one transaction and in file
/// order; other entries are ignored. A file without entries is a successful load that changes
/// nothing, unless the defaults are asked for.
///
/// The transaction is committed without waiting for the outcome. After a failure it is neither
/// committed nor ended, but left to the Parameter Handler.
///
/// @param operations null when there is no connection, which fails without a message.
/// @return whether the commit was sent, or there was nothing to do; every failure is logged.
bool loadPreset(const ParameterOperations* operations, const std::string& presetName,
                const std::string& filePath, const PresetManager& manager, Defaults defaults);

/// Resets all keys of a preset to their defaults, in one transaction, as `loadPreset` does.
bool loadDefaults(const ParameterOperations* operations, const std::string& presetName,
                  const PresetManager& manager);

} // namespace morvane
