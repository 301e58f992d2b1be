// Errors of the calls to the Parameter Handler: which are final, and the log of them.
#pragma once

#include "glib/glib_owned.h"

#include <string_view>

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

/// Whether an error's message says that the Parameter Handler itself refused the call, which is
/// final. All others are transport errors.
bool isRefusal(std::string_view message);

/// The error's message; never null.
const char* messageOf(const OwnedError& error);

} // namespace morvane
