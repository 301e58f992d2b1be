#include "engine/preset_file.h"

#include "text/c_string_view.h"

#include <cassert>

namespace morvane {

namespace {

constexpr std::size_t blockSize = std::size_t{64} << 10U; // of what is written at once

std::string canonicalKey(std::string_view key) {
    PresetEntry entry;
    parsePresetKey(key, entry);
    return presetKey(entry);
}

bool writeBlock(std::FILE* stream, std::string& lines) {
    const bool isWritten = std::fwrite(lines.data(), 1, lines.size(), stream) == lines.size();
    lines.clear();
    return isWritten;
}

} // namespace

bool writePresetEntry(std::string& lines, std::string_view key, std::string_view value) {
    if (key.empty() || value.empty())
        return false;
    lines.append(key).append(1, '=').append(value).append(1, '\n');
    return true;
}

int writePresetFile(std::FILE* stream, const KeySet& keys, std::span<const char* const> values) {
    assert(values.size() == keys.size());
    std::string lines;
    lines.reserve(blockSize + presetLineBufferSize); // the last line may go beyond the block
    std::string assembled;
    int count = 0;
    int written = 0;
    for (const CStringView key : keys) {
        if (!keys.isCanonical())
            assembled = canonicalKey(key.view());
        const std::string_view canonical = keys.isCanonical() ? key.view() : assembled;
        if (!writePresetEntry(lines, canonical, values[static_cast<std::size_t>(count)]))
            break;
        ++count;
        if (lines.size() < blockSize)
            continue;
        if (!writeBlock(stream, lines))
            return written;
        written = count;
    }
    return writeBlock(stream, lines) ? count : written;
}

} // namespace morvane
