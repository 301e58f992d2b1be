// Decides at start-up which conditions of the parameter definitions hold for this device.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/system_arguments.h"

#include <vector>

namespace morvane {

class SystemParameterTable;

/// Says whether `condition` names a system parameter or an index.
bool namesParameter(const Expression& condition, const SystemParameterTable& parameters);

/// Says whether `condition` holds. The empty condition does. One that names a system parameter or
/// an index does too: it depends on values that change while the device runs, so it is not decided
/// here. One that cannot be evaluated does not hold.
bool conditionHolds(const Expression& condition, const SystemParameterTable& parameters,
                    const SystemArguments& arguments);

/// Says whether every condition holds.
bool conditionsHold(const std::vector<Expression>& conditions,
                    const SystemParameterTable& parameters, const SystemArguments& arguments);

} // namespace morvane
