// The daemon's command line, which is its whole configuration.
#pragma once

#include "paramdef/system_arguments.h"

#include <cstdint>
#include <string>

namespace morvane {

struct Arguments {
    std::int32_t daemonize = 1; ///< 0 with the option "debug"
    std::string paramDefFile;
    std::string presetDefFile;
    SystemArguments systemArguments;
};

/// Parses the command line into `arguments`.
///
/// Ends the process when help, usage or the version is asked for, and with a usage message and a
/// status other than 0 when a file name is missing or a system argument has no "=".
void parseCommandLine(int argc, char** argv, Arguments& arguments);

} // namespace morvane
