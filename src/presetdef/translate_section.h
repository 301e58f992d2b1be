// The records of a translate section: how entries of preset data files that were written for an
// older parameter set are carried over. Texts stay as they were written, and are borrowed from the
// text of the file.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane {

/// Old parameters whose entries are dropped.
struct RemovedList {
    std::uint32_t line = 0;
    std::vector<std::string_view> names;

    bool operator==(const RemovedList&) const = default;
};

/// The old parameter that a current one comes from.
struct FromMapping {
    std::uint32_t line = 0;
    std::string_view oldName;
    std::map<std::string_view, std::string_view> values; ///< old value text to new value text
    std::vector<std::string_view> repeatedValues{}; ///< old ones that occur again, to no effect

    bool operator==(const FromMapping&) const = default;
};

/// How the indices of a current parameter are formed from those of an old entry.
struct IndexMapping {
    std::uint32_t line = 0;
    std::uint32_t count = 0; ///< the number of indices of the old entries that this is for
    std::vector<std::pair<std::string_view, std::string_view>> pairs; ///< index name, template text
    std::string_view place{};                                         ///< empty, at the count

    bool operator==(const IndexMapping&) const = default;
};

struct TranslateMapping {
    std::uint32_t line = 0;
    std::string_view newName;
    std::vector<IndexMapping> indexMappings;
    std::vector<FromMapping> fromMappings;

    bool operator==(const TranslateMapping&) const = default;
};

struct TranslateSection {
    std::uint32_t line = 0;
    std::vector<RemovedList> removedLists;
    std::vector<TranslateMapping> mappings;

    bool operator==(const TranslateSection&) const = default;
};

} // namespace morvane
