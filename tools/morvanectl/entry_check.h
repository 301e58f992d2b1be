// What a load makes of the entry of a preset data file, whatever the preset is.
#pragma once

#include "core/preset_manager.h"
#include "engine/preset_entry.h"
#include "engine/preset_translate.h"

#include <map>
#include <string>
#include <string_view>

namespace morvane::ctl {

/// Why an entry is dropped.
enum class DropReason {
    removed,     ///< its parameter is in a removed list
    unmapped,    ///< its indices cannot be mapped
    noParameter, ///< there is no such parameter on this variant
    noInstance,  ///< the parameter has no such index value on this variant
    notInPreset, ///< it is a key of this variant, but the preset does not cover it
};

struct TranslatedEntry {
    PresetEntry entry; ///< as a load reads it; its texts are borrowed as those of any entry
    std::string key{}; ///< empty if the entry is removed or unmapped
    DropReason unlessCovered = DropReason::removed; ///< what drops it if no preset has the key
};

class EntryCheck {
public:
    /// @param manager borrowed for the life of the check.
    explicit EntryCheck(const PresetManager& manager) : manager_(manager) {}

    /// Translates an entry as a load does.
    TranslatedEntry translate(PresetEntry entry, Reports reports);

    /// Whether the parameter of this name, which is on this variant, has the key.
    bool isOnDevice(std::string_view name, std::string_view key);

private:
    DropReason unlessCovered(const PresetEntry& entry, const std::string& key);

    const PresetManager& manager_;
    std::map<std::string, KeySet, std::less<>> instances_; ///< by parameter
};

} // namespace morvane::ctl
