// Opens preset data files for the commands that only look at them.
#pragma once

#include "text/line_reader.h"

#include <string>

namespace morvane::ctl {

/// Opens a regular file for reading; unlike a load, leaves a left-over backup alone.
/// @return null, with a word on standard error, if it cannot be read.
OwnedStream openDataFile(const std::string& file);

} // namespace morvane::ctl
