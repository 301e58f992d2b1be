// The command line of morvanectl.
#pragma once

#include "output.h"

namespace morvane::ctl {

/// Parses the command line and runs the subcommand.
ExitStatus runCommandLine(int argc, char** argv);

} // namespace morvane::ctl
