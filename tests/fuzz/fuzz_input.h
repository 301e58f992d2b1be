// What the fuzz targets share: files made of bytes, and silence.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace morvane::fuzz {

/// A file in memory that is read by its path.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
        if (write(descriptor_, content.data(), content.size()) !=
            static_cast<ssize_t>(content.size()))
            __builtin_trap();
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

/// Sends the error reports of the readers to the null device, once.
inline void silence() {
    static const bool done = std::freopen("/dev/null", "w", stdout) != nullptr;
    if (!done)
        __builtin_trap();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace morvane::fuzz
