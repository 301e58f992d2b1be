// Logs errors of the connection to the Parameter Handler.
#pragma once

#include "glib/glib_owned.h"

namespace morvane {

/// What failed, when the engine's operations on parameters are reported.
constexpr const char* setFailed = "parm_set_() - set failed";
constexpr const char* resetFailed = "parm_reset_() - reset failed";
constexpr const char* getFailed = "parm_get_() - get failed";
constexpr const char* bulkGetFailed = "parm_get_() - bulk get failed";

/// Whether a report is also the end of the process, with status 1.
enum class AfterReport {
    goOn,
    exit
};

/// Logs "ERROR: message (detail)". Both texts are borrowed.
void reportError(const char* message, const char* detail, AfterReport after);

/// The same with the error's message for the detail; frees the error.
void reportError(const char* message, OwnedError error, AfterReport after);

/// The error's message; never null.
const char* messageOf(const OwnedError& error);

} // namespace morvane
