// The keys that presets and parameters have on this device.
#pragma once

#include "tables/device_tables.h"
#include "tables/key_set.h"

#include <span>
#include <string_view>
#include <vector>

namespace morvane {

struct PresetDefinition;

namespace PresetGenerate {

/// The keys that each preset covers, in the order of the presets: every read-write parameter that
/// it does not exclude and the read-only parameters that it includes. The sets share the texts of
/// their keys. Takes memory in proportion to the keys, not to the numbers that a definition could
/// stand for; beyond what a TextList may take, throws std::bad_alloc.
std::vector<KeySet> keySets(const IndexTable& indices, const ParameterMap& readWrite,
                            const ParameterMap& readOnly,
                            std::span<const PresetDefinition> presets);

/// The keys that one preset covers.
KeySet keySet(const IndexTable& indices, const ParameterMap& readWrite,
              const ParameterMap& readOnly, const PresetDefinition& preset);

/// The keys of every instance of one parameter. None if an index has no value or is missing.
KeySet parameterKeys(const IndexTable& indices, std::string_view name,
                     const IndexNames& indexNames);

} // namespace PresetGenerate

} // namespace morvane
