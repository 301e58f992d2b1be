#include "support/memory_limit.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

namespace morvane::test {

namespace {

// The first number of this file is the size of the address space in pages.
rlim_t addressSpace() {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

MemoryLimit::MemoryLimit(std::size_t bytes) {
    getrlimit(RLIMIT_AS, &saved_);
    auto limit = saved_;
    limit.rlim_cur = addressSpace() + bytes;
    EXPECT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
}

MemoryLimit::~MemoryLimit() {
    setrlimit(RLIMIT_AS, &saved_);
}

} // namespace morvane::test
