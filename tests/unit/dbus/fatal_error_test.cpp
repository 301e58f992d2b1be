#include "dbus/fatal_error.h"
#include "support/log_recorder.h"

#include <gtest/gtest.h>

#include <syslog.h>

#include <vector>

namespace morvane {
namespace {

TEST(FatalError, LogsTagMessageAndDetail) {
    report_error("morvane", "Couldn’t create mutex", "Unknown (OOM ?)", /*must_exit=*/false);
    EXPECT_EQ(test::takeLog(),
              (std::vector<test::LogRecord>{
                  {LOG_ERR, "morvane: ERROR: Couldn’t create mutex (Unknown (OOM ?))\n"}}));
}

TEST(FatalError, EndsTheProcessWithStatus1IfItMust) {
    EXPECT_EXIT(report_error("tag", "message", "detail", /*must_exit=*/true),
                testing::ExitedWithCode(1), "");
    EXPECT_EXIT(failStartUp("message", "detail"), testing::ExitedWithCode(1), "");
}

} // namespace
} // namespace morvane
