// The command line of the simulator.
#pragma once

#include "paramdef/system_arguments.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane::sim {

struct Options {
    std::string paramDefFile;
    SystemArguments systemArguments;
    std::string address;    ///< of the bus; empty for the session bus
    std::string valuesFile; ///< empty without one
    std::string faultsFile; ///< empty without one
    bool printReady = false;
    bool verbose = false;
};

/// Parses the command line.
/// @return an exit status if the process is to end: 0 after help or the version was printed, other
///         than 0 after an error was; nothing if `options` was filled.
std::optional<int> parseOptions(int argc, char** argv, Options& options);

} // namespace morvane::sim
