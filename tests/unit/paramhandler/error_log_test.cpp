#include "paramhandler/error_log.h"
#include "support/log_recorder.h"

#include <gtest/gtest.h>

#include <syslog.h>

#include <cstdlib>
#include <vector>

namespace morvane {
namespace {

using Log = std::vector<test::LogRecord>;

OwnedError newError(const char* message) {
    return OwnedError(g_error_new_literal(g_quark_from_static_string("test"), 1, message));
}

TEST(ErrorLog, LogsMessageAndDetail) {
    logError("Start transaction failed", "no answer");
    EXPECT_EQ(test::takeLog(), (Log{{LOG_ERR, "ERROR: Start transaction failed (no answer)\n"}}));
}

TEST(ErrorLog, LogsAnErrorsMessage) {
    logError("parm_get_() - get failed", messageOf(newError("dbus_norvix_transaction: 100% busy")));
    EXPECT_EQ(
        test::takeLog(),
        (Log{{LOG_ERR, "ERROR: parm_get_() - get failed (dbus_norvix_transaction: 100% busy)\n"}}));
}

TEST(ErrorLog, HasAMessageForAnErrorWithoutOne) {
    auto error = newError("");
    g_free(error->message);
    error->message = nullptr;
    EXPECT_STREQ(messageOf(error), "");
}

TEST(ErrorLog, EndsTheProcessWithStatus1IfItIsTold) {
    EXPECT_EXIT(exitWithError("message", "detail"), testing::ExitedWithCode(EXIT_FAILURE), "");
}

} // namespace
} // namespace morvane
