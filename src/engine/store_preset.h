// Stores the live values of a preset, or of a part of one, in a preset data file.
#pragma once

#include "tables/key_set.h"

#include <string>

namespace morvane {

class PresetManager;
struct ParameterOperations;

/// Reads the values of all keys of a preset in one transaction and writes them to a file, which is
/// replaced as a whole.
///
/// A value that comes back empty ends the writing there, and the store still succeeds. A failure
/// after the transaction was started leaves it open, for the Parameter Handler to drop.
///
/// @param operations null when there is no connection, which fails without a message.
/// @return whether the file is complete and the transaction ended; every failure is logged.
bool storePreset(const ParameterOperations* operations, const std::string& presetName,
                 const std::string& filePath, const PresetManager& manager);

/// Does the same for those of `subPresetKeys` that belong to the preset; the others are ignored.
/// The file then holds nothing else.
bool storeSubPreset(const ParameterOperations* operations, const KeySet& subPresetKeys,
                    const std::string& presetName, const std::string& filePath,
                    const PresetManager& manager);

} // namespace morvane
