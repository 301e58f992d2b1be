#include "engine/retry.h"

#include <syslog.h>
#include <unistd.h>

namespace morvane {

bool withRetries(const char* name, const std::function<bool()>& operation) {
    constexpr int maxAttempts = 10;
    constexpr unsigned pauseSeconds = 1;
    for (int attempt = 1; !operation(); ++attempt) {
        syslog(LOG_ERR, "%s() attempt %d failed\n", name, attempt);
        if (attempt == maxAttempts) {
            syslog(LOG_ERR, "CRITICAL ERROR: Parameter Handler communication lost\n");
            return false;
        }
        sleep(pauseSeconds);
    }
    return true;
}

bool startTransaction(const ParameterOperations& operations, Transaction& transaction) {
    return withRetries("parm_start_trans",
                       [&] { return operations.parm_start_trans(transaction); });
}

} // namespace morvane
