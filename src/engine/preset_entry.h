// One line of a preset data file, and the keys in it. Opens no files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// A parameter instance and its value. All texts are borrowed: from the line that was read or,
/// where a translation has changed them, from the translation tables.
struct PresetEntry {
    std::string_view name;                 ///< the key up to its first "["
    std::vector<std::string_view> indices; ///< one per bracketed group of the key, as text
    std::string_view value;
};

/// The text without the white space at its end: \t, \f, \v, \n and \r, but not blanks.
std::string_view trimEnd(std::string_view text);

/// Splits a key such as "gain[1][2]" into its parts. Its end is trimmed; an unclosed group and
/// text between groups are dropped.
///
/// @param entry replaced by one without a value. Callers that read many keys reuse one entry, so
///              that its list of indices is not allocated for each.
void parsePresetKey(std::string_view key, PresetEntry& entry);

/// Splits a line at its first "=", after its end has been trimmed.
/// @param entry replaced: by an empty one if there is no "="; otherwise by one whose name or value
///              may be empty.
void parsePresetLine(std::string_view line, PresetEntry& entry);

/// The canonical key of an entry: the name and "[" index "]" for each index. Empty if the name is.
std::string presetKey(const PresetEntry& entry);

/// The same at the end of a text, for callers that reuse its memory.
void appendPresetKey(const PresetEntry& entry, std::string& text);

/// The entry's line without a line feed: canonical key, "=" and value.
std::string formatPresetLine(const PresetEntry& entry);

} // namespace morvane
