#include "dbus/run_server.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

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

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) // which keeps what is freed

std::size_t residentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Small texts, and one behind them that keeps the heap from becoming shorter.
TEST(FreedMemory, GoesBackToTheSystem) {
    constexpr std::size_t size = 1000;
    constexpr std::size_t count = 32000;
    std::vector<std::unique_ptr<std::string>> texts;
    for (std::size_t i = 0; i < count; ++i)
        texts.push_back(std::make_unique<std::string>(size, 'x'));
    texts.erase(texts.begin(), texts.end() - 1);
    const auto before = residentBytes();
    returnFreedMemory();
    EXPECT_LT(residentBytes() + size * count / 2, before);
}

#endif

} // namespace
} // namespace morvane
