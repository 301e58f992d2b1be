// The values that each index takes on this device.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace morvane {

using IndexValues = std::vector<std::string>;

/// Appends the decimal text of every number from `low` to `high`, both included; nothing if `high`
/// is below `low`.
void appendNumbers(std::int32_t low, std::int32_t high, IndexValues& values);

/// By index name. An index that does not exist on this device is not there.
using IndexTable = std::map<std::string, IndexValues, std::less<>>;

} // namespace morvane
