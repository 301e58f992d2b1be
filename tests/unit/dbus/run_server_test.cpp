#include "dbus/run_server.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace morvane {
namespace {

// The descriptor that is opened next.
int nextDescriptor() {
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

TEST(StandardStreams, StayAsTheyAreWhenAllAreOpen) {
    const int next = nextDescriptor();
    openStandardStreams();
    EXPECT_EQ(nextDescriptor(), next);
}

TEST(StandardStreams, AreOpenedWhenTheyAreClosed) {
    EXPECT_EXIT(
        {
            const int next = nextDescriptor();
            close(STDIN_FILENO);
            close(STDOUT_FILENO);
            close(STDERR_FILENO);
            openStandardStreams();
            const bool areOpen = fcntl(STDIN_FILENO, F_GETFD) >= 0 &&
                                 fcntl(STDOUT_FILENO, F_GETFD) >= 0 &&
                                 fcntl(STDERR_FILENO, F_GETFD) >= 0;
            std::_Exit(areOpen && nextDescriptor() == next ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace morvane
