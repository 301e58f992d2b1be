// Records what is written to a standard stream.
#pragma once

#include <functional>
#include <string>

namespace morvane::test {

/// Calls `action` and returns the bytes that it wrote to file descriptor 1.
std::string standardOutputOf(const std::function<void()>& action);

/// Calls `action` and returns the bytes that it wrote to file descriptor 2.
std::string standardErrorOf(const std::function<void()>& action);

} // namespace morvane::test
