// Reads and writes the lines of a preset data file. Knows neither where the file comes from nor
// what keeps it safe.
#pragma once

#include "engine/preset_entry.h"
#include "text/line_reader.h"

#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace morvane {

/// For a line with its line feed and a null byte; longer ones are read as several.
constexpr std::size_t presetLineBufferSize = 1024;

/// Reads to the end of the stream and hands every entry with a name and a value to `use`; all other
/// lines are skipped, and lines of more than 1023 bytes are read as several.
///
/// @param stream open for reading; borrowed, stays open.
/// @param use    a callable that takes a PresetEntry&, which it may change. The entry and its texts
///               are gone when the call returns: files are read line by line, whatever their size.
/// @return the number of entries handed out.
template <typename Use>
int readPresetFile(std::FILE* stream, Use use) {
    LineReader<presetLineBufferSize> lines(stream);
    PresetEntry entry;
    int count = 0;
    while (const auto line = lines.next()) {
        parsePresetLine(*line, entry);
        if (entry.name().empty() || entry.value().empty())
            continue;
        use(entry);
        ++count;
    }
    return count;
}

/// Writes the line of one entry with a line feed.
///
/// @param stream open for writing; borrowed, stays open.
/// @param key    written in its canonical form, which has the same parts when read back.
/// @param line   overwritten: a buffer to be reused for all lines of a file.
/// @return false if the key has no name or the value is empty, with nothing written, or if the
///         stream refuses the line, with its error indicator set.
bool writePresetEntry(std::FILE* stream, std::string_view key, std::string_view value,
                      std::string& line);

/// Writes a line for each key with its value, in order, and stops at the first that cannot be
/// written. Lines already written stay.
///
/// @param values one for each key.
/// @return the number of lines written.
int writePresetFile(std::FILE* stream, std::span<const std::string> keys,
                    std::span<const char* const> values);

} // namespace morvane
