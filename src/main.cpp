// morvane: stores and loads presets of device parameters. The order of the steps, nothing else.

#include "core/preset_manager.h"
#include "dbus/command_line.h"
#include "dbus/run_server.h"
#include "paramhandler/connection.h"

int main(int argc, char** argv) {
    morvane::openStandardStreams();
    morvane::Arguments arguments;
    morvane::parseCommandLine(argc, argv, arguments);
    const auto parameterHandler = morvane::connectParameterHandler();
    morvane::PresetManager manager(arguments.paramDefFile, arguments.presetDefFile,
                                   arguments.systemArguments);
    morvane::returnFreedMemory();
    return morvane::run_server(parameterHandler, manager, arguments.daemonize);
}
