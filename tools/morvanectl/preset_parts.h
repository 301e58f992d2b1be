// The lists of a preset, split into parts: what each list, item and clause selects by itself.
#pragma once

#include "core/preset_manager.h"
#include "presetdef/preset_definition.h"
#include "tables/device_tables.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// One part of a list that selects something: "all", one of the list's own clauses, one item, or
/// one clause of an item.
struct PresetPart {
    PresetList::Kind kind;
    std::uint32_t line = 0;
    std::string text;        ///< such as "item gain, index clause on line 7"
    std::string_view place;  ///< where it begins in the file
    PresetDefinition alone;  ///< a preset that has nothing but this part
    const IndexSpec* clause; ///< of the part; null without one. Points into the definition.
    std::string item;        ///< its parameter; empty for "all" and for a list's own clause
};

/// @param preset borrowed for the life of the parts.
std::vector<PresetPart> partsOf(const PresetDefinition& preset);

/// Whether the part selects an instance of any parameter on this device.
bool selectsAny(const PresetPart& part, const PresetManager& manager);

/// The instances of the parameters that the part selects on this device, whether it adds them to
/// the preset or takes them away.
KeySet selectedKeys(const PresetPart& part, const PresetManager& manager,
                    const ParameterMap& parameters);

} // namespace morvane::ctl
