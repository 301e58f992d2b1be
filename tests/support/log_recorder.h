// Stands in for the C library's system log and pauses inside a test program: nothing reaches the
// machine's log, and nothing waits.
#pragma once

#include <string>
#include <vector>

namespace morvane::test {

/// One call of `syslog`.
struct LogRecord {
    int priority = 0;
    std::string text; ///< formatted, the line feed included if the message has one

    bool operator==(const LogRecord&) const = default;
};

/// Hands over what was logged since the last call, in order.
std::vector<LogRecord> takeLog();

/// Hands over the lengths, in seconds, of the calls of `sleep` since the last call.
std::vector<unsigned> takeSleeps();

/// Readable in a failed expectation.
void PrintTo(const LogRecord& record, std::ostream* out);

} // namespace morvane::test
