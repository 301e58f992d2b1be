#include "engine/retry.h"
#include "support/log_recorder.h"

#include <gtest/gtest.h>

#include <syslog.h>

#include <string>
#include <vector>

namespace morvane {
namespace {

struct RetryRow {
    const char* why;
    int failures; ///< before the operation succeeds
    bool succeeds;
    int calls;
    std::vector<test::LogRecord> log;
    std::vector<unsigned> sleeps;
};

std::vector<test::LogRecord> attemptsUpTo(int count) {
    std::vector<test::LogRecord> log;
    for (int attempt = 1; attempt <= count; ++attempt)
        log.push_back({LOG_ERR, "parm_set() attempt " + std::to_string(attempt) + " failed\n"});
    return log;
}

std::vector<test::LogRecord> givingUp() {
    auto log = attemptsUpTo(10);
    log.push_back({LOG_ERR, "CRITICAL ERROR: Parameter Handler communication lost\n"});
    return log;
}

const RetryRow retryRows[] = {
    {"success at once", 0, true, 1, {}, {}},
    {"one failure", 1, true, 2, attemptsUpTo(1), {1}},
    {"nine failures", 9, true, 10, attemptsUpTo(9), std::vector<unsigned>(9, 1)},
    {"the tenth failure does not sleep", 10, false, 10, givingUp(), std::vector<unsigned>(9, 1)},
    {"no eleventh call", 100, false, 10, givingUp(), std::vector<unsigned>(9, 1)},
};

TEST(Retry, CallsAtMostTenTimesOneSecondApart) {
    for (const auto& [why, failures, succeeds, calls, log, sleeps] : retryRows) {
        SCOPED_TRACE(why);
        int called = 0;
        const int succeedsFrom = failures;
        EXPECT_EQ(withRetries("parm_set", [&] { return called++ >= succeedsFrom; }), succeeds);
        EXPECT_EQ(called, calls);
        EXPECT_EQ(test::takeLog(), log);
        EXPECT_EQ(test::takeSleeps(), sleeps);
    }
}

} // namespace
} // namespace morvane
