// How entries of older preset data files become entries of this device, ready for lookup.
#pragma once

#include "tables/device_tables.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

struct TranslateMapping;
struct TranslateSection;

/// How a list of old indices becomes the current one: one element for each current index of the
/// parameter. An element that holds "idx::" and a number stands for the old index at that position,
/// counted from 0; any other is the new index itself.
using IndexTemplate = std::vector<std::string>;

/// By the number of indices of the old entry. All templates of a parameter have the same length,
/// its current number of indices.
using IndexTemplateMap = std::map<std::size_t, IndexTemplate>;

/// By parameter name. A parameter without templates is not there.
using IndexMaps = std::map<std::string, IndexTemplateMap, std::less<>>;

/// What became of an old parameter.
struct NameMapping {
    std::string newName;
    std::map<std::string, std::string, std::less<>> values; ///< old value text to new value text

    bool operator==(const NameMapping&) const = default;
};

struct TranslationTables {
    std::set<std::string, std::less<>> removed; ///< names of parameters whose entries are dropped
    std::map<std::string, NameMapping, std::less<>> nameMappings; ///< by old name
    IndexMaps indexMaps;

    /// Whether entries of this name may be dropped or changed.
    bool mentions(std::string_view name) const {
        return removed.contains(name) || nameMappings.contains(name) || indexMaps.contains(name);
    }
};

namespace PresetGenerate {

/// Adds the index templates of a translate section. Of two templates for the same parameter and
/// number of old indices, the first stays.
///
/// Stops, with a message on standard error, at the first mapping whose parameter does not exist on
/// this device or that leaves out one of its indices. Mappings before it keep their templates;
/// entries of its parameter and of those after it keep their old indices.
void transIndexMapList(const std::vector<TranslateMapping>& mappings, const ParameterMap& readWrite,
                       const ParameterMap& readOnly, IndexMaps& indexMaps);

/// Adds everything that a translate section says. Of two mappings of an old name, the first stays.
void addTranslation(const TranslateSection& section, const ParameterMap& readWrite,
                    const ParameterMap& readOnly, TranslationTables& tables);

} // namespace PresetGenerate

} // namespace morvane
