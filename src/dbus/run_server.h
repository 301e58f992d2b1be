// The daemon's life: its standard streams, its memory, its name on the session bus, its object,
// serving.
#pragma once

#include "paramhandler/connection.h"

#include <cstdint>

namespace morvane {

class PresetManager;

/// Opens the null device for each standard stream that is closed. Otherwise, whatever is opened
/// first would take its descriptor: reports would go into the socket of the bus, and detaching
/// would replace it.
void openStandardStreams();

/// Gives the memory that has been freed back to the system, where the C library can.
void returnFreedMemory();

/// Serves until "die" is called. A failure before that is logged and ends the process with
/// status 1; a failure to detach aborts it.
///
/// @param manager   borrowed; must outlive the call.
/// @param daemonize other than 0: detach into the background before serving.
/// @return 1, always: it becomes the exit status, and service managers rely on it.
std::int32_t run_server(const Connection& parameterHandler, PresetManager& manager,
                        std::int32_t daemonize);

} // namespace morvane
