// Lets code that reads files by their paths read bytes from memory.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace morvane::test {

/// A file in memory that is read by its path.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("test", MFD_CLOEXEC)) {
        if (write(descriptor_, content.data(), content.size()) !=
            static_cast<ssize_t>(content.size()))
            std::abort();
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

} // namespace morvane::test
