// Reads and writes the lines of a preset data file. Where the file comes from and what keeps it
// safe is not known here.
#pragma once

#include "engine/preset_entry.h"

#include <cstddef>
#include <cstdio>

namespace morvane {

/// For a line with its line feed and a byte 0; longer ones are read as several.
constexpr std::size_t presetLineBufferSize = 1024;

/// Reads to the end of the stream and appends every entry with a name and a value; all other lines
/// are skipped, and lines of more than 1023 bytes are read as several.
///
/// @param stream open for reading; borrowed, stays open.
/// @return the number of entries appended.
int readPresetFile(std::FILE* stream, PresetEntryList& entries);

/// Writes the line of one entry with a line feed.
///
/// @param stream open for writing; borrowed, stays open.
/// @return false if the entry has no name or no value, with nothing written, or if the stream
///         refuses the line, with its error indicator set.
bool writePresetEntry(std::FILE* stream, const PresetEntry& entry);

/// Writes the entries in list order and stops at the first that cannot be written. Lines already
/// written stay.
///
/// @return the number of lines written.
int writePresetFile(std::FILE* stream, const PresetEntryList& entries);

} // namespace morvane
