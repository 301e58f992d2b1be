// What the system log says about operations that were refused.
#pragma once

#include "support/log_recorder.h"

#include <syslog.h>

#include <string>
#include <vector>

namespace morvane::test {

/// The record that follows that of the tenth refused attempt.
inline const LogRecord handlerLost{LOG_ERR,
                                   "CRITICAL ERROR: Parameter Handler communication lost\n"};

/// The records of `count` refusals of an operation, followed by `rest`.
inline std::vector<LogRecord> attempts(const std::string& operation, int count,
                                       const std::vector<LogRecord>& rest = {}) {
    std::vector<LogRecord> log;
    for (int attempt = 1; attempt <= count; ++attempt)
        log.push_back({LOG_ERR, operation + "() attempt " + std::to_string(attempt) + " failed\n"});
    log.insert(log.end(), rest.begin(), rest.end());
    return log;
}

} // namespace morvane::test
