// The parameters that exist on this device, by name.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace morvane {

/// The names of a parameter's indices, one per dimension. What values they take is in the index
/// table; everything else that the definitions say has been decided when the map is built.
using IndexNames = std::vector<std::string>;

using ParameterMap = std::map<std::string, IndexNames, std::less<>>;

} // namespace morvane
