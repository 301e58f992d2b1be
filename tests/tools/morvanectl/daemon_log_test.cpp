#include "daemon_log.h"

#include <gtest/gtest.h>

#include <optional>

namespace morvane::ctl {
namespace {

struct UnitRow {
    const char* why;
    const char* groups;
    std::optional<Unit> unit;
};

const UnitRow rows[] = {
    {"of the system", "0::/system.slice/morvane.service\n", Unit{"morvane.service", false}},
    {"of a user", "0::/user.slice/user-1000.slice/user@1000.service/app.slice/morvane.service\n",
     Unit{"morvane.service", true}},
    {"with groups of its own", "0::/system.slice/a.service/inner\n", Unit{"a.service", false}},
    {"older systems", "12:cpu:/b.service\n1:name=systemd:/system.slice/a.service\n",
     Unit{"a.service", false}},
    {"both hierarchies", "1:name=systemd:/system.slice/a.service\n0::/\n",
     Unit{"a.service", false}},
    {"a terminal of a user",
     "0::/user.slice/user-0.slice/user@0.service/app.slice/app-shell-1.scope\n", std::nullopt},
    {"a login", "0::/user.slice/user-0.slice/session-2.scope\n", std::nullopt},
    {"without systemd", "0::/\n", std::nullopt},
    {"a process that is gone", "", std::nullopt},
};

TEST(DaemonLog, FindsTheUnitOfAProcess) {
    for (const auto& [why, groups, unit] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(unitOf(groups), unit);
    }
}

} // namespace
} // namespace morvane::ctl
