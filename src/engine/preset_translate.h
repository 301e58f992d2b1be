// Brings the entries of an older preset data file in line with the parameters of this device.
#pragma once

#include "engine/preset_entry.h"
#include "tables/translation_tables.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace morvane {

class PresetManager;

/// Whether entries whose indices cannot be mapped are reported on standard error.
enum class Reports {
    on,
    off
};

/// Rewrites an entry in place: an old name and value become the current ones, and the indices are
/// mapped as `PresetTranslate::translate` does. New texts are borrowed from the tables.
///
/// @return false if the entry is dropped because its parameter has been removed. Entries of unknown
///         parameters are to be dropped, too: see `isOfKnownParameter`.
bool translateEntry(const TranslationTables& tables, PresetEntry& entry,
                    Reports reports = Reports::on);

/// Whether a translated entry belongs to a parameter of this device, or could not be mapped. Not
/// part of the translation because a load needs it for few entries: those in a preset are known.
bool isOfKnownParameter(const PresetManager& manager, const PresetEntry& entry);

struct PresetTranslate {
    /// Maps the indices of an entry.
    ///
    /// @return the entry with its current indices: the old ones if the parameter has no templates
    ///         or the number of indices is already the current one. An entry without name and value
    ///         if it cannot be mapped, which is reported; it belongs to no preset.
    static PresetEntry translate(PresetEntry entry, const IndexMaps& indexMaps,
                                 Reports reports = Reports::on);

    /// The position, counted from 0, of the old index that an element of a template refers to;
    /// nothing if it is the new index itself. There may be no index at that position.
    static std::optional<std::size_t> referredPosition(std::string_view element);
};

} // namespace morvane
