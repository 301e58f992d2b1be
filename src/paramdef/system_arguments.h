// The system arguments: `name=value` texts on the command line that say which variant of the device
// this is. They are the name table against which conditions are evaluated.
#pragma once

#include "paramdef/expression.h"

#include <string_view>

namespace morvane {

using SystemArguments = NameTable;

/// Adds the pair that `argument` gives: the text before the first "=", which may be empty, and
/// everything after it. A name that is there already keeps its first value.
///
/// @return false, with nothing added, if there is no "=".
bool addSystemArgument(SystemArguments& arguments, std::string_view argument);

} // namespace morvane
