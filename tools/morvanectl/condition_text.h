// Access types and conditions of parameter definitions, put in words.
#pragma once

#include "paramdef/system_parameter.h"
#include "tables/condition.h"

#include <string>
#include <vector>

namespace morvane::ctl {

/// The keyword of an access type, such as "rw".
const char* keywordOf(AccessType access);

/// The outcome of a condition on a variant.
enum class Verdict {
    holds,
    fails,
    assumedMet, ///< it names a parameter, so it counts as met
    unusable,   ///< it cannot be evaluated
};

Verdict judge(const Expression& condition, const SystemParameterTable& parameters,
              const SystemArguments& arguments);

/// Whether the operators of the condition have their operands.
bool hasStructure(const Expression& condition);

/// The condition as it was written in `source`, without its parentheses, on one line.
std::string textOf(const Expression& condition, const SourceText& source);

/// Each name in the condition with the value it has, such as "inputs is 4" or "model has no value".
std::vector<std::string> valuesSeen(const Expression& condition,
                                    const SystemParameterTable& parameters,
                                    const SystemArguments& arguments);

/// What became of a condition: its text, its outcome and the values that it saw, such as
/// "ctrlValid (inputs > 2) holds (inputs is 4)".
/// @param attribute that has the condition.
std::string outcomeOf(const char* attribute, const Expression& condition,
                      const SystemParameterTable& parameters, const SystemArguments& arguments);

} // namespace morvane::ctl
