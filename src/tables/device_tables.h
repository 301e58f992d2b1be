// What exists on this device: the values of its indices, and its parameters. Every condition is
// evaluated here, once, against the system arguments.
#pragma once

#include "paramdef/system_arguments.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace morvane {

class SystemParameterTable;

using IndexValues = std::vector<std::string>;

/// By index name. An index that does not exist on this device is not there.
using IndexTable = std::map<std::string, IndexValues, std::less<>>;

/// The names of a parameter's indices, one per dimension. Their values are in the index table;
/// everything else in the definitions is resolved when the map is built.
using IndexNames = std::vector<std::string>;

/// By parameter name.
using ParameterMap = std::map<std::string, IndexNames, std::less<>>;

/// Which parameters go into a parameter map.
enum class AccessSelector : std::int32_t {
    readOnly = 0, ///< "ro" and "rostrict"
    writeOnly = 1,
    readWrite = 2,
};

/// Appends the decimal text of every number from `low` to `high`, both included; nothing if `high`
/// is below `low`.
void appendNumbers(std::int32_t low, std::int32_t high, IndexValues& values);

namespace PresetGenerate {

/// The values of every index whose `ctrlValid` conditions hold: those of its `rangeValid`
/// attributes whose condition holds, in file order.
IndexTable indexTable(const SystemParameterTable& parameters, const SystemArguments& arguments);

/// The parameters of the selected access types whose `ctrlValid` conditions hold.
ParameterMap parameterMap(const SystemParameterTable& parameters, const SystemArguments& arguments,
                          AccessSelector selector);

} // namespace PresetGenerate

} // namespace morvane
