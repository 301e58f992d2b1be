#include "engine/retry.h"
#include "support/log_recorder.h"
#include "support/parameter_recorder.h"
#include "support/retry_log.h"

#include <gtest/gtest.h>

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

const RetryRow retryRows[] = {
    {"success at once", 0, true, 1, {}, {}},
    {"one failure", 1, true, 2, test::attempts("parm_set", 1), {1}},
    {"nine failures", 9, true, 10, test::attempts("parm_set", 9), std::vector<unsigned>(9, 1)},
    {"the tenth failure does not sleep", 10, false, 10,
     test::attempts("parm_set", 10, {test::handlerLost}), std::vector<unsigned>(9, 1)},
    {"no eleventh call", 100, false, 10, test::attempts("parm_set", 10, {test::handlerLost}),
     std::vector<unsigned>(9, 1)},
};

TEST(Retry, CallsAtMostTenTimesOneSecondApart) {
    test::takeLog();
    test::takeSleeps();
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

TEST(Retry, StartsATransaction) {
    test::ParameterRecorder recorder;
    recorder.refusals["parm_start_trans"] = 1;
    Transaction transaction = 0;
    EXPECT_TRUE(startTransaction(recorder.operations(), transaction));
    EXPECT_EQ(transaction, 7U);
    EXPECT_EQ(test::takeLog(), test::attempts("parm_start_trans", 1));
}

} // namespace
} // namespace morvane
