#include "engine/preset_file.h"

#include <cassert>

namespace morvane {

bool writePresetEntry(std::FILE* stream, const PresetEntry& entry, std::string& line) {
    if (entry.name.empty() || entry.value.empty())
        return false;
    formatPresetLine(entry, line);
    line += '\n';
    return std::fputs(line.c_str(), stream) != EOF;
}

int writePresetFile(std::FILE* stream, std::span<const std::string> keys,
                    std::span<const char* const> values) {
    assert(values.size() == keys.size());
    PresetEntry entry;
    std::string line;
    int count = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        parsePresetKey(keys[i], entry);
        entry.value = values[i];
        if (!writePresetEntry(stream, entry, line))
            break;
        ++count;
    }
    return count;
}

} // namespace morvane
