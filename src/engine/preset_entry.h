// One line of a preset data file, and the keys in it. Opens no files.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane {

/// A parameter instance and its value. All texts are borrowed: from the line that was read or,
/// where a translation has changed them, from the translation tables.
class PresetEntry {
public:
    PresetEntry() = default;
    PresetEntry(std::string_view name, std::vector<std::string_view> indices,
                std::string_view value)
        : name_(name),
          indices_(std::move(indices)),
          value_(value) {}

    /// The key up to its first "[".
    std::string_view name() const { return name_; }

    /// One per bracketed group of the key, as text.
    const std::vector<std::string_view>& indices() const { return indices_; }

    std::string_view value() const { return value_; }

    void setName(std::string_view name) {
        name_ = name;
        canonicalText_ = {};
    }
    void setIndices(std::vector<std::string_view> indices) {
        indices_ = std::move(indices);
        canonicalText_ = {};
    }
    void setValue(std::string_view value) { value_ = value; }

    /// The canonical key: the name and "[" index "]" for each index. Empty if the name is.
    ///
    /// @param buffer overwritten if the key must be assembled.
    /// @return borrowed from the entry's texts or the buffer.
    std::string_view key(std::string& buffer) const;

private:
    friend void parsePresetKey(std::string_view key, PresetEntry& entry);

    std::string_view name_;
    std::vector<std::string_view> indices_;
    std::string_view value_;

    /// The canonical key if the line contains it as it is, which saves assembling it; otherwise
    /// empty.
    std::string_view canonicalText_;
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

/// The canonical key of an entry, as a copy.
std::string presetKey(const PresetEntry& entry);

/// The canonical key of the entry that `parsePresetKey` would make of `key`, without making it.
///
/// @param buffer overwritten if the key must be assembled.
/// @return borrowed from the key or the buffer.
std::string_view canonicalKey(std::string_view key, std::string& buffer);

/// The entry's line without a line feed: canonical key, "=" and value.
/// @param line overwritten.
void formatPresetLine(const PresetEntry& entry, std::string& line);

} // namespace morvane
