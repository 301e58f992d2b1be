#include "paramhandler/error_report.h"
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

TEST(ErrorReport, LogsMessageAndDetail) {
    reportError("Start transaction failed", "no answer", AfterReport::goOn);
    EXPECT_EQ(test::takeLog(), (Log{{LOG_ERR, "ERROR: Start transaction failed (no answer)\n"}}));
}

TEST(ErrorReport, LogsAnErrorsMessage) {
    reportError("parm_get_() - get failed", newError("dbus_norvix_transaction: 100% busy"),
                AfterReport::goOn);
    EXPECT_EQ(
        test::takeLog(),
        (Log{{LOG_ERR, "ERROR: parm_get_() - get failed (dbus_norvix_transaction: 100% busy)\n"}}));
}

TEST(ErrorReport, HasAMessageForAnErrorWithoutOne) {
    auto error = newError("");
    g_free(error->message);
    error->message = nullptr;
    EXPECT_STREQ(messageOf(error), "");
}

TEST(ErrorReport, EndsTheProcessWithStatus1IfItIsTold) {
    EXPECT_EXIT(reportError("message", "detail", AfterReport::exit),
                testing::ExitedWithCode(EXIT_FAILURE), "");
    EXPECT_EXIT(reportError("message", newError("detail"), AfterReport::exit),
                testing::ExitedWithCode(EXIT_FAILURE), "");
}

} // namespace
} // namespace morvane
