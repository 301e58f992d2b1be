#include "paramhandler/error_report.h"

#include <syslog.h>

#include <cstdlib>

namespace morvane {

void reportError(const char* message, const char* detail, AfterReport after) {
    syslog(LOG_ERR, "ERROR: %s (%s)\n", message, detail);
    if (after == AfterReport::exit)
        std::exit(EXIT_FAILURE);
}

void reportError(const char* message, OwnedError error, AfterReport after) {
    reportError(message, messageOf(error), after);
}

const char* messageOf(const OwnedError& error) {
    return error->message != nullptr ? error->message : "";
}

} // namespace morvane
