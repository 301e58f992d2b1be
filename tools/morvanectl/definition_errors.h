// Reads both definition files as the daemon does, and finds what keeps it from using them.
#pragma once

#include "core/definitions.h"
#include "findings.h"
#include "settings.h"

#include <optional>
#include <vector>

namespace morvane::ctl {

struct ReadFiles {
    std::optional<Definitions> definitions; ///< nothing if the daemon cannot use them
    std::vector<Finding> errors;            ///< what it cannot use, and blocks that never end
};

/// Reads each file once, and the second only if the first can be used: what it says about names
/// would only follow from the errors of the first.
///
/// @return no definitions and no errors if a file cannot be read, after a message on standard
/// error.
ReadFiles readDefinitionFiles(const Settings& settings);

} // namespace morvane::ctl
