// One line of a preset data file, and the keys in it. Knows no files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Its texts are borrowed: from the line that it was read from, and what a translation has changed
/// from the tables of the translation.
struct PresetEntry {
    std::string_view name;                 ///< the key up to its first "["
    std::vector<std::string_view> indices; ///< one per bracketed group of the key, as text
    std::string_view value;

    /// The canonical key, where it stands in the line as it is, which spares putting it together;
    /// empty if it does not. Whoever changes the name or the indices empties it.
    std::string_view writtenKey = {};
};

/// Takes a key such as "gain[1][2]" apart. Trailing \t, \f, \v, \n and \r are cut, blanks are not;
/// an unclosed group and text between groups are dropped.
///
/// @param entry replaced by one without a value. Whoever reads many keys uses one entry for all of
///              them, whose list of indices then takes no memory of its own for each.
void parsePresetKey(std::string_view key, PresetEntry& entry);

/// Takes a line apart at its first "=". Trailing white space is cut as in a key.
/// @param entry replaced: by an empty one if there is no "="; otherwise by one whose name or value
///              may be empty.
void parsePresetLine(std::string_view line, PresetEntry& entry);

/// The canonical key of an entry: its name and "[" index "]" for each index. Empty if the name is.
///
/// @param buffer overwritten if the key must be put together.
/// @return borrowed from the entry or the buffer.
std::string_view presetKey(const PresetEntry& entry, std::string& buffer);

/// The same as a text of its own.
std::string presetKey(const PresetEntry& entry);

/// The entry's line without a line feed: canonical key, "=" and value.
/// @param line overwritten.
void formatPresetLine(const PresetEntry& entry, std::string& line);

} // namespace morvane
