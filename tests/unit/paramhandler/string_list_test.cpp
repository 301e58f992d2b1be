#include "paramhandler/string_list.h"
#include "support/log_recorder.h"

#include <gtest/gtest.h>

#include <syslog.h>

#include <string>
#include <vector>

namespace {

int allocationsToFail = 0;
std::vector<gulong> pauses;

gpointer allocateOrFail(gsize count, gsize size) {
    if (allocationsToFail > 0) {
        --allocationsToFail;
        return nullptr;
    }
    return g_malloc0_n(count, size);
}

} // namespace

// The program's own definitions win over GLib's.
extern "C" {

gpointer g_try_malloc0_n(gsize count, gsize size) {
    return allocateOrFail(count, size);
}

// What a compiler makes of the former where it knows the size.
gpointer g_try_malloc0(gsize size) {
    return allocateOrFail(1, size);
}

void g_usleep(gulong microseconds) {
    pauses.push_back(microseconds);
}
}

namespace morvane {
namespace {

TEST(StringList, PointsToItsTextsInOrderAndEndsWithNull) {
    const std::vector<std::string> texts{"b", "", "a"};
    StringList list(texts.size(), "");
    for (const auto& text : texts)
        list.add(text);
    EXPECT_EQ(list.size(), 3U);
    EXPECT_EQ(list.front(), texts[0].c_str()) << "not copied";
    EXPECT_EQ(list.array()[1], texts[1].c_str());
    EXPECT_EQ(list.array()[2], texts[2].c_str());
    EXPECT_EQ(list.array()[3], nullptr);
}

TEST(StringList, WaitsForMemoryAndLogsEachFailure) {
    allocationsToFail = 3;
    const StringList list(2, "parm_get_() getParm - out of memory\n");
    EXPECT_NE(list.array(), nullptr);
    EXPECT_EQ(test::takeLog(),
              std::vector<test::LogRecord>(3, {LOG_ERR, "parm_get_() getParm - out of memory\n"}));
    EXPECT_EQ(pauses, std::vector<gulong>(3, 500));
}

} // namespace
} // namespace morvane
