// What a load sends to the Parameter Handler, gathered from the entries of a preset data file.
#pragma once

#include "engine/parameter_operations.h"
#include "engine/preset_entry.h"
#include "tables/key_set.h"

#include <cstddef>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

class PresetManager;

/// Keys, with those of read-only parameters apart: their live values are status values.
struct KeysToReset {
    std::vector<CStringView> keys;
    std::vector<CStringView> statusKeys;
};

/// Takes entries one after the other and keeps only each value and the place of its key: a file is
/// never in memory as a whole.
class LoadPlan {
public:
    /// Both are borrowed for the plan's life; what it hands out is borrowed from them and from it.
    LoadPlan(const PresetManager& manager, const KeySet& presetKeys);

    /// Takes the value of a line if the key stands in it as it stands in the preset, and nothing is
    /// to be translated. Saves parsing and translating most lines.
    ///
    /// @return false, with nothing taken, for any other line: it is to be parsed and added.
    bool addAsWritten(std::string_view line);

    /// Translates an entry and, if its key is in the preset, takes its value. A key that occurs
    /// twice is set twice.
    /// @param entry as it was read; changed by the translation.
    void add(PresetEntry& entry);

    /// Whether translation has dropped every entry.
    bool empty() const { return empty_; }

    /// The values to set, in the order of the entries; those of read-only parameters separately.
    std::span<const KeyValue> values() const { return values_; }
    std::span<const KeyValue> statusValues() const { return statusValues_; }

    /// The keys of the preset that no entry sets, in order.
    KeysToReset unsetKeys();

private:
    /// What all keys of a parameter have in common.
    struct Parameter {
        std::string name;
        bool isReadOnly = false;
        bool isTranslated = false;
    };

    const Parameter& parameterOf(std::string_view key);
    void addValue(std::size_t place, bool isReadOnly, std::string_view value);
    CStringView kept(std::string_view value);

    const PresetManager& manager_;
    const KeySet& presetKeys_;
    Parameter parameter_; ///< of the last key asked for: those of one follow each other
    KeySearch search_;
    std::vector<bool> isSet_; ///< by place in the preset
    bool empty_ = true;
    std::string key_; ///< reused for the keys of all entries
    std::pmr::monotonic_buffer_resource texts_;
    std::vector<KeyValue> values_;
    std::vector<KeyValue> statusValues_;
};

} // namespace morvane
