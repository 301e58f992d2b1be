// Warnings about the presets of the preset definition file.

#include "preset_parts.h"
#include "tables/preset_keys.h"
#include "text/number.h"
#include "warnings.h"

#include <algorithm>
#include <map>

namespace morvane::ctl {

namespace {

using Kind = PresetList::Kind;

/// Collects the warnings about the presets of one variant.
class PresetCheck {
public:
    PresetCheck(const PresetDefinitions& presets, const PresetManager& manager,
                WarningList& warnings)
        : manager_(manager),
          warnings_(warnings) {
        for (const auto& preset : presets.presets)
            ++count_[preset.name];
    }

    void check(const PresetDefinition& preset) {
        const std::string name(preset.name);
        const auto [first, isNew] = firstLines_.try_emplace(name, preset.line);
        if (!isNew)
            warnings_.add(preset.name, "repeated-preset",
                          "there is a preset " + name + " already, on line " +
                              std::to_string(first->second) +
                              "; the first that covers a key counts");
        if (!coversKey(preset))
            warnings_.addAbsence(preset.name, "no-preset",
                                 "preset " + name + " covers no key, so there is no such preset");
        for (const auto& part : partsOf(preset))
            checkPart(part);
    }

private:
    // The manager has a name if one of its presets covers a key.
    bool coversKey(const PresetDefinition& preset) const {
        return manager_.is_preset(preset.name) &&
               (count_.at(preset.name) == 1 ||
                !PresetGenerate::keySet(manager_.indices(), manager_.readWrite(),
                                        manager_.readOnly(), preset)
                     .empty());
    }

    void checkPart(const PresetPart& part) {
        const bool includes = part.kind == Kind::include;
        const auto& all = includes ? manager_.readOnly() : manager_.readWrite();
        if (!part.item.empty() && !all.find(part.item)) {
            warnings_.addAbsence(part.place, "selects-nothing",
                                 part.text + " selects nothing: no parameter " + part.item +
                                     " on this variant");
            return;
        }
        if (!selectsAny(part, manager_))
            warnings_.addAbsence(part.place, "selects-nothing", part.text + " selects nothing");
        if (part.clause == nullptr)
            return;
        for (const auto& selector : part.clause->selectors)
            checkSelector(selector);
    }

    void checkSelector(const IndexSelector& selector) {
        const auto indexName = selector.indexName;
        const auto& values = selector.values;
        const auto& [kind, names, numbers, ranges] = values;
        const auto kinds = int{!names.empty()} + int{!numbers.empty()} + int{!ranges.empty()};
        if (kinds > 1)
            warnings_.add(indexName, "mixed-values",
                          "a value set of mixed kinds: only its " + std::string(nameOf(kind)) +
                              " count");
        const auto index = manager_.indices().find(indexName);
        if (index != manager_.indices().end())
            checkValues(indexName, values, index->second);
        else if (kind != IndexValueSet::Kind::none)
            warnings_.addAbsence(indexName, "no-index",
                                 "index " + std::string(indexName) +
                                     " does not exist on this variant");
    }

    static const char* nameOf(IndexValueSet::Kind kind) {
        switch (kind) {
        case IndexValueSet::Kind::name:
            return "names";
        case IndexValueSet::Kind::number:
            return "numbers";
        default:
            return "ranges";
        }
    }

    void checkValues(std::string_view indexName, const IndexValueSet& set,
                     const IndexValues& values) {
        const auto check = [&](std::string_view value) {
            if (std::find(values.begin(), values.end(), value) == values.end())
                warnings_.addAbsence(indexName, "no-such-value",
                                     "index " + std::string(indexName) +
                                         " does not have the value " + std::string(value));
        };
        switch (set.kind) {
        case IndexValueSet::Kind::none:
            break;
        case IndexValueSet::Kind::name:
            std::for_each(set.names.begin(), set.names.end(), check);
            break;
        case IndexValueSet::Kind::number:
            for (const auto number : set.numbers)
                check(decimalText(static_cast<std::int32_t>(number)));
            break;
        case IndexValueSet::Kind::range:
            for (const auto& [low, high] : set.ranges) {
                check(decimalText(low));
                if (high != low)
                    check(decimalText(high));
            }
            break;
        }
    }

    const PresetManager& manager_;
    WarningList& warnings_;
    std::map<std::string_view, std::size_t> count_; ///< of the presets of a name
    std::map<std::string, std::uint32_t> firstLines_;
};

} // namespace

std::vector<Warning> presetWarnings(const PresetDefinitions& presets,
                                    const PresetManager& manager) {
    WarningList warnings(Warning::File::presets, *presets.text);
    PresetCheck check(presets, manager, warnings);
    for (const auto& preset : presets.presets)
        check.check(preset);
    return warnings.take();
}

} // namespace morvane::ctl
