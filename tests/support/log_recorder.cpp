#include "support/log_recorder.h"

#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <ostream>
#include <utility>

namespace morvane::test {

namespace {

std::vector<LogRecord> log;
std::vector<unsigned> sleeps;

__attribute__((format(printf, 2, 0))) void record(int priority, const char* format,
                                                  std::va_list arguments) {
    std::array<char, 4096> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    log.push_back({priority, text.data()});
}

} // namespace

std::vector<LogRecord> takeLog() {
    return std::exchange(log, {});
}

std::vector<unsigned> takeSleeps() {
    return std::exchange(sleeps, {});
}

void PrintTo(const LogRecord& record, std::ostream* out) {
    *out << (record.priority == LOG_ERR ? "error \"" : "info \"") << record.text << '"';
}

} // namespace morvane::test

// The program's own definitions win over the C library's.
extern "C" {

__attribute__((format(printf, 2, 3))) void syslog(int priority, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    morvane::test::record(priority, format, arguments);
    va_end(arguments);
}

// What syslog becomes in a fortified build.
__attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int /*flag*/,
                                                        const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    morvane::test::record(priority, format, arguments);
    va_end(arguments);
}

unsigned sleep(unsigned seconds) {
    morvane::test::sleeps.push_back(seconds);
    return 0;
}
}
