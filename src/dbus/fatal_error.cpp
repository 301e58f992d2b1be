#include "dbus/fatal_error.h"

#include <syslog.h>

#include <cstdlib>

namespace morvane {

void report_error(const char* tag, const char* message, const char* detail, bool must_exit) {
    syslog(LOG_ERR, "%s: ERROR: %s (%s)\n", tag, message, detail);
    if (must_exit)
        std::exit(EXIT_FAILURE);
}

void failStartUp(const char* message, const char* detail) {
    report_error(programTag, message, detail, /*must_exit=*/true);
    std::abort(); // not reached
}

} // namespace morvane
