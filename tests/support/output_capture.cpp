#include "support/output_capture.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <array>
#include <cstdio>

namespace morvane::test {

namespace {

std::string readAll(std::FILE* file) {
    std::string text;
    std::array<char, 4096> buffer{};
    std::rewind(file);
    while (const auto count = std::fread(buffer.data(), 1, buffer.size(), file))
        text.append(buffer.data(), count);
    return text;
}

// Works below stdio, so that only what reached the descriptor counts.
std::string outputOf(int descriptor, std::FILE* stream, const std::function<void()>& action) {
    std::FILE* const file = std::tmpfile();
    if (file == nullptr) {
        ADD_FAILURE() << "cannot make a temporary file";
        return {};
    }
    std::fflush(stream);
    const int saved = dup(descriptor);
    dup2(fileno(file), descriptor);
    action();
    dup2(saved, descriptor);
    close(saved);
    auto text = readAll(file);
    std::fclose(file);
    return text;
}

} // namespace

std::string standardOutputOf(const std::function<void()>& action) {
    return outputOf(STDOUT_FILENO, stdout, action);
}

std::string standardErrorOf(const std::function<void()>& action) {
    return outputOf(STDERR_FILENO, stderr, action);
}

} // namespace morvane::test
