#include "paramhandler/error_log.h"

#include <syslog.h>

#include <cstdlib>

namespace morvane {

void logError(const char* message, const char* detail) {
    syslog(LOG_ERR, "ERROR: %s (%s)\n", message, detail);
}

void exitWithError(const char* message, const char* detail) {
    logError(message, detail);
    std::exit(EXIT_FAILURE);
}

// The Parameter Handler marks its own errors.
bool isRefusal(std::string_view message) {
    return message.starts_with("dbus_norvix_transaction");
}

const char* messageOf(const OwnedError& error) {
    return error->message != nullptr ? error->message : "";
}

} // namespace morvane
