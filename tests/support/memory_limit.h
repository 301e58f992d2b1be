// Lets a test show that something costs little memory, however big the numbers in its input are.
#pragma once

#include <sys/resource.h>

#include <cstddef>

namespace morvane::test {

/// While it lives, the process may use at most `bytes` more address space than it has. An
/// allocation beyond that throws, which fails the test, or ends a program that is built with
/// AddressSanitizer.
class MemoryLimit {
public:
    explicit MemoryLimit(std::size_t bytes);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

private:
    rlimit saved_{};
};

} // namespace morvane::test
