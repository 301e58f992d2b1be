// The records of the preset definition file. All lists keep file order and duplicates; names and
// values stay as they were written, and are borrowed from the text of the file. A record's line is
// where it began; those without a name have an empty text there, which says where it stands.
#pragma once

#include "presetdef/translate_section.h"
#include "text/source_text.h"

#include <compare>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace morvane {

/// Both ends included; `low` is not greater than `high`.
struct ValueRange {
    std::int32_t low = 0;
    std::int32_t high = 0;

    auto operator<=>(const ValueRange&) const = default;
};

/// A braced set of numbers, ranges and names.
struct IndexValueSet {
    enum class Kind : std::uint32_t {
        none = 0,
        name = 1,
        number = 2,
        range = 3
    };

    /// The kind of the last element. It alone decides which of the three lists counts, so a set of
    /// mixed kinds means less than it says: `{ 1, 2..5 }` is the range alone.
    Kind kind = Kind::none;
    std::vector<std::string_view> names;
    std::vector<std::uint32_t> numbers;
    std::vector<ValueRange> ranges;

    bool operator==(const IndexValueSet&) const = default;
};

struct IndexSelector {
    std::string_view indexName;
    bool isNot = false;
    IndexValueSet values{};      ///< of kind none when no set was written
    bool hasSeveralSets = false; ///< of which the last counts

    bool operator==(const IndexSelector&) const = default;
};

/// One index clause.
struct IndexSpec {
    std::uint32_t line = 0;   ///< of the opening brace
    std::string_view place{}; ///< empty, at the opening brace
    bool none = false;        ///< then there are no selectors
    std::vector<IndexSelector> selectors;

    bool operator==(const IndexSpec&) const = default;
};

/// One parameter named in a list.
struct PresetItem {
    std::uint32_t line = 0;
    std::string_view name;
    std::vector<IndexSpec> indexSpecs;

    bool operator==(const PresetItem&) const = default;
};

/// An include list adds read-only parameters to a preset, an exclude list takes read-write ones
/// away; there are no other pairings.
struct PresetList {
    enum class Kind : std::uint32_t {
        include = 0,
        exclude = 1
    };
    enum class Access : std::uint32_t {
        ro = 0,
        rw = 1
    };

    std::uint32_t line = 0;
    std::string_view place{}; ///< empty, at the keyword
    Kind kind = Kind::include;
    Access access = Access::ro;
    bool all = false;
    std::vector<IndexSpec> indexSpecs; ///< clauses that are themselves items of the list
    std::vector<PresetItem> items;

    bool operator==(const PresetList&) const = default;
};

struct PresetDefinition {
    std::uint32_t line = 0;
    std::string_view name;
    std::vector<PresetList> includeLists;
    std::vector<PresetList> excludeLists;

    bool operator==(const PresetDefinition&) const = default;
};

struct PresetDefinitions {
    std::vector<TranslateSection> translateSections;
    std::vector<PresetDefinition> presets;
    /// What the records borrow their texts from, shared by copies.
    std::shared_ptr<SourceText> text = std::make_shared<SourceText>();

    /// Compares the records.
    bool operator==(const PresetDefinitions& other) const {
        return translateSections == other.translateSections && presets == other.presets;
    }
};

} // namespace morvane
