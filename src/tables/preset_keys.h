// The keys that presets and parameters have on this device.
#pragma once

#include "tables/device_tables.h"
#include "tables/key_set.h"

#include <string>

namespace morvane {

struct PresetDefinition;

namespace PresetGenerate {

/// The keys that a preset covers: every read-write parameter that it does not exclude and the
/// read-only parameters that it includes. Takes time and memory in proportion to their number.
KeySet keySet(const IndexTable& indices, const ParameterMap& readWrite,
              const ParameterMap& readOnly, const PresetDefinition& preset);

/// The keys of every instance of one parameter. None if an index has no value or is missing.
KeySet parameterKeys(const IndexTable& indices, const std::string& name,
                     const IndexNames& indexNames);

} // namespace PresetGenerate

} // namespace morvane
