// Reads and writes the lines of a preset data file. Knows neither where the file comes from nor
// what keeps it safe.
#pragma once

#include "engine/preset_entry.h"
#include "tables/key_set.h"
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
    return readPresetFile(
        stream, [](std::string_view) { return false; }, use);
}

/// The same for a reader that takes some lines before they are parsed.
///
/// @param take a callable that takes the line and returns whether it was an entry that it has
///             used; any other line is parsed.
/// @return the number of entries taken or handed out.
template <typename Take, typename Use>
int readPresetFile(std::FILE* stream, Take take, Use use) {
    LineReader<presetLineBufferSize> lines(stream);
    PresetEntry entry;
    int count = 0;
    while (const auto line = lines.next()) {
        if (!take(*line)) {
            parsePresetLine(*line, entry);
            if (entry.name.empty() || entry.value.empty())
                continue;
            use(entry);
        }
        ++count;
    }
    return count;
}

/// Appends the line of one entry with a line feed to the lines of a file.
///
/// @param key in its canonical form.
/// @return false if the key or the value is empty; nothing is appended then.
bool writePresetEntry(std::string& lines, std::string_view key, std::string_view value);

/// Writes a line for each key with its value, in order, and stops at the first without a name or a
/// value, or when the stream refuses a block of lines, with its error indicator set. Lines already
/// written stay.
///
/// @param stream open for writing; borrowed, stays open. What it is given comes in blocks.
/// @param keys   written in their canonical form, which has the same parts when read back.
/// @param values one for each key.
/// @return the number of lines in the blocks that the stream has taken.
int writePresetFile(std::FILE* stream, const KeySet& keys, std::span<const char* const> values);

} // namespace morvane
