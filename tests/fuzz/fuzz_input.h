// What the fuzz targets share: input bytes as files and text, and silenced reports.
#pragma once

#include "support/memory_file.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace morvane::fuzz {

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
