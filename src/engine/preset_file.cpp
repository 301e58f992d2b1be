#include "engine/preset_file.h"

#include "text/line_reader.h"

#include <utility>

namespace morvane {

int readPresetFile(std::FILE* stream, PresetEntryList& entries) {
    LineReader<presetLineBufferSize> lines(stream);
    int count = 0;
    while (const auto line = lines.next()) {
        auto entry = parsePresetLine(*line);
        if (entry.name.empty() || entry.value.empty())
            continue;
        entries.push_back(std::move(entry));
        ++count;
    }
    return count;
}

bool writePresetEntry(std::FILE* stream, const PresetEntry& entry) {
    if (entry.name.empty() || entry.value.empty())
        return false;
    return std::fputs((formatPresetLine(entry) + "\n").c_str(), stream) != EOF;
}

int writePresetFile(std::FILE* stream, const PresetEntryList& entries) {
    int count = 0;
    for (const auto& entry : entries) {
        if (!writePresetEntry(stream, entry))
            break;
        ++count;
    }
    return count;
}

} // namespace morvane
