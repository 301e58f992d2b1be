#include "options.h"

#include <CLI/CLI.hpp>

namespace morvane::sim {

namespace {

std::string checkSystemArgument(const std::string& text) {
    SystemArguments unused;
    return addSystemArgument(unused, text) ? "" : "a system argument is NAME=VALUE";
}

} // namespace

std::optional<int> parseOptions(int argc, char** argv, Options& options) {
    std::vector<std::string> arguments;
    CLI::App app("Stands in for the Parameter Handler at a desk and in tests: serves the "
                 "parameters of a definition file on the session bus.");
    app.set_version_flag("--version", MORVANE_VERSION);
    app.add_option("param_def_file", options.paramDefFile, "Parameter definition file")->required();
    app.add_option("system_arguments", arguments, "name=value pairs that describe the device")
        ->check(checkSystemArgument);
    app.add_option("--address", options.address, "Bus to serve on instead of the session bus");
    app.add_option("--values", options.valuesFile, "File of key=value lines to start with");
    app.add_option("--faults", options.faultsFile,
                   "Script of faults, one a line: METHOD WHEN ACTION [ARGUMENT]");
    app.add_flag("--print-ready", options.printReady,
                 "Print \"ready\" and the connection's name on standard output when served");
    app.add_flag("--verbose", options.verbose, "Log every call and answer on standard error");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    }
    for (const auto& argument : arguments)
        addSystemArgument(options.systemArguments, argument);
    return std::nullopt;
}

} // namespace morvane::sim
