// One line of a preset data file, and the keys in it. Knows no files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvane {

struct PresetEntry {
    std::string name;                 ///< the key up to its first "["
    std::vector<std::string> indices; ///< one per bracketed group of the key, as text
    std::string value;

    bool operator==(const PresetEntry&) const = default;
};

using PresetEntryList = std::vector<PresetEntry>;

/// Takes a key such as "gain[1][2]" apart. Trailing \t, \f, \v, \n and \r are cut, blanks are not;
/// an unclosed group and text between groups are dropped.
/// @return an entry without a value.
PresetEntry parsePresetKey(std::string_view key);

/// Takes a line apart at its first "=". Trailing white space is cut as in a key.
/// @return an empty entry if there is no "="; otherwise one whose name or value may be empty.
PresetEntry parsePresetLine(std::string_view line);

/// The canonical key of an entry: its name and "[" index "]" for each index. Empty if the name is.
std::string presetKey(const PresetEntry& entry);

/// The entry's line without a line feed: canonical key, "=" and value.
std::string formatPresetLine(const PresetEntry& entry);

} // namespace morvane
