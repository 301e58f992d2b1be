// Reports start-up failures.
#pragma once

namespace morvane {

/// Tag of the start-up messages in the system log. The messages carry it themselves, because the
/// log's own ident is the C library's default.
constexpr const char* programTag = "morvane";

/// Logs "tag: ERROR: message (detail)" at error level and, if `must_exit` is set, ends the process
/// with status 1. All texts are borrowed.
void report_error(const char* tag, const char* message, const char* detail, bool must_exit);

/// Reports a failure after which start-up cannot go on: tag "morvane", and the process ends.
[[noreturn]] void failStartUp(const char* message, const char* detail);

} // namespace morvane
