// Preset data files and entries as texts, which are easier to compare and to keep.
#pragma once

#include "engine/preset_file.h"

#include <string>
#include <string_view>
#include <vector>

namespace morvane::test {

/// The entry of a line, which it borrows its texts from.
inline PresetEntry entryOf(std::string_view line) {
    PresetEntry entry;
    parsePresetLine(line, entry);
    return entry;
}

/// The lines of all entries that are read from a stream.
inline std::vector<std::string> readLines(std::FILE* stream) {
    std::vector<std::string> lines;
    readPresetFile(stream,
                   [&](const PresetEntry& entry) { lines.push_back(formatPresetLine(entry)); });
    return lines;
}

} // namespace morvane::test
