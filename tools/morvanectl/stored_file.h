// A preset data file that is written beside the service, as a store would write it.
#pragma once

#include "output.h"

#include <map>
#include <string>

namespace morvane::ctl {

/// Values by key. A store writes the keys in the same order.
using StoredValues = std::map<std::string, std::string>;

/// Writes the values to a file that is new or replaced as a whole: at no time does it hold a part
/// of them. Refuses to replace what is no regular file, the file `input`, and a file with a
/// left-over backup, which a load would put back.
///
/// @param values none of them empty, which a load does not set either.
/// @return yes, or error with a message on standard error.
ExitStatus writeStoredFile(const std::string& file, const std::string& input,
                           const StoredValues& values, const Messages& messages);

} // namespace morvane::ctl
