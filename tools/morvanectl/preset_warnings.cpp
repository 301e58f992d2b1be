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
    PresetCheck(const PresetManager& manager, std::vector<Warning>& warnings)
        : manager_(manager),
          warnings_(warnings) {}

    void check(const PresetDefinition& preset) {
        const std::string name(preset.name);
        const auto [first, isNew] = firstLines_.try_emplace(name, preset.line);
        if (!isNew)
            add(preset.line, name,
                "there is a preset " + name + " already, on line " + std::to_string(first->second) +
                    "; the first that covers a key counts");
        if (PresetGenerate::keySet(manager_.indices(), manager_.readWrite(), manager_.readOnly(),
                                   preset)
                .empty())
            add(preset.line, name, "preset " + name + " covers no key, so there is no such preset");
        for (const auto& part : partsOf(preset))
            checkPart(part);
    }

private:
    void add(std::uint32_t line, const std::string& word, const std::string& text) {
        warnings_.push_back({Warning::File::presets, line, word, text, {}});
    }

    const ParameterMap& candidates(const PresetPart& part) const {
        return part.kind == Kind::include ? manager_.readOnly() : manager_.readWrite();
    }

    void checkPart(const PresetPart& part) {
        const auto& all = candidates(part);
        const auto place = all.find(part.item);
        if (!part.item.empty() && !place) {
            add(part.line, part.word,
                part.text + " selects nothing: no parameter " + part.item + " on this variant");
            return;
        }
        // One parameter is enough for an item, which saves the time for all the others.
        const bool selects =
            part.item.empty()
                ? !selectedKeys(part, manager_, all).empty()
                : !selectedKeys(part, manager_, {{part.item, all.indexNames(*place)}}).empty();
        if (!selects)
            add(part.line, part.word, part.text + " selects nothing");
        if (part.clause != nullptr) {
            for (const auto& selector : part.clause->selectors)
                checkSelector(part.clause->line, selector);
        }
    }

    void checkSelector(std::uint32_t line, const IndexSelector& selector) {
        const std::string indexName(selector.indexName);
        const auto& values = selector.values;
        const auto& [kind, names, numbers, ranges] = values;
        const auto kinds = int{!names.empty()} + int{!numbers.empty()} + int{!ranges.empty()};
        if (kinds > 1)
            add(line, indexName,
                "a value set of mixed kinds: only its " + std::string(nameOf(kind)) + " count");
        const auto index = manager_.indices().find(indexName);
        if (index == manager_.indices().end()) {
            if (kind != IndexValueSet::Kind::none)
                add(line, indexName, "index " + indexName + " does not exist on this variant");
            return;
        }
        checkValues(line, indexName, values, index->second);
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

    void checkValues(std::uint32_t line, const std::string& indexName, const IndexValueSet& set,
                     const IndexValues& values) {
        const auto check = [&](std::string_view value) {
            if (std::find(values.begin(), values.end(), value) == values.end())
                add(line, indexName,
                    "index " + indexName + " does not have the value " + std::string(value));
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
    std::vector<Warning>& warnings_;
    std::map<std::string, std::uint32_t> firstLines_;
};

} // namespace

std::vector<Warning> presetWarnings(const PresetDefinitions& presets,
                                    const PresetManager& manager) {
    std::vector<Warning> warnings;
    PresetCheck check(manager, warnings);
    for (const auto& preset : presets.presets)
        check.check(preset);
    return warnings;
}

} // namespace morvane::ctl
