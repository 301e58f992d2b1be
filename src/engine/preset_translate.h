// Brings the entries of an older preset data file in line with the parameters of this device.
#pragma once

#include "engine/preset_entry.h"
#include "engine/tables/translation_tables.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace morvane {

class PresetManager;

/// Rewrites the entries in place: old names and values become the current ones, entries of removed
/// and of unknown parameters are dropped without a word, and indices are mapped.
void translateEntries(const PresetManager& manager, PresetEntryList& entries);

struct PresetTranslate {
    /// Maps the indices of an entry.
    ///
    /// @return the entry with its current indices: the old ones if the parameter has no templates
    ///         or the number of indices is today's. An entry without name and value if it cannot
    ///         be mapped, with a message on standard error; it belongs to no preset.
    static PresetEntry translate(PresetEntry entry, const IndexMaps& indexMaps);

    /// The position, counted from 0, of the old index that an element of a template refers to;
    /// nothing if it is the new index itself. There may be no index at that position.
    static std::optional<std::size_t> referredPosition(std::string_view element);
};

} // namespace morvane
