#include "engine/preset_file.h"

#include <cassert>

namespace morvane {

bool writePresetEntry(std::FILE* stream, std::string_view key, std::string_view value,
                      std::string& line) {
    const auto canonical = canonicalKey(key, line);
    if (canonical.empty() || value.empty())
        return false;
    if (canonical.data() != line.data()) // else it has been assembled there
        line = canonical;
    line += '=';
    line += value;
    line += '\n';
    return std::fputs(line.c_str(), stream) != EOF;
}

int writePresetFile(std::FILE* stream, std::span<const std::string> keys,
                    std::span<const char* const> values) {
    assert(values.size() == keys.size());
    std::string line;
    int count = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!writePresetEntry(stream, keys[i], values[i], line))
            break;
        ++count;
    }
    return count;
}

} // namespace morvane
