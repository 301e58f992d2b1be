// Logs errors of the connection to the Parameter Handler.
#pragma once

#include "glib/glib_owned.h"

namespace morvane {

/// What failed, in reports about the engine's operations on parameters.
constexpr const char* setFailed = "parm_set_() - set failed";
constexpr const char* resetFailed = "parm_reset_() - reset failed";
constexpr const char* getFailed = "parm_get_() - get failed";
constexpr const char* bulkGetFailed = "parm_get_() - bulk get failed";

/// Logs "ERROR: message (detail)". Both texts are borrowed.
void logError(const char* message, const char* detail);

/// Does the same, and ends the process with status 1.
[[noreturn]] void exitWithError(const char* message, const char* detail);

/// The error's message; never null.
const char* messageOf(const OwnedError& error);

} // namespace morvane
