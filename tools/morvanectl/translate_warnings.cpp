// Warnings about the translate sections of the preset definition file.

#include "engine/preset_translate.h"
#include "text/number.h"
#include "warnings.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace morvane::ctl {

namespace {

/// Collects the warnings about the translate sections of one variant.
class TranslateCheck {
public:
    TranslateCheck(const PresetManager& manager, WarningList& warnings)
        : manager_(manager),
          warnings_(warnings) {}

    void check(const TranslateMapping& mapping) {
        const std::string name(mapping.newName);
        if (!manager_.isParameter(name)) {
            const char* const consequence =
                mapping.indexMappings.empty()
                    ? " on this variant: entries that become it are dropped"
                    : " on this variant: its index mappings and those after it in the section are "
                      "not used";
            warnings_.addAbsence(mapping.newName, "no-parameter",
                                 "no parameter " + name + consequence);
        }
        for (const auto& from : mapping.fromMappings)
            checkOldName(from);
        for (const auto& indexMapping : mapping.indexMappings)
            checkIndexMapping(name, indexMapping);
    }

private:
    void checkOldName(const FromMapping& from) {
        const std::string name(from.oldName);
        const auto [first, isNew] = oldNames_.try_emplace(name, from.line);
        if (!isNew)
            warnings_.add(from.oldName, "repeated-mapping",
                          name + " has a mapping already, on line " +
                              std::to_string(first->second) + ", which counts");
    }

    void checkIndexMapping(const std::string& name, const IndexMapping& mapping) {
        const auto [first, isNew] =
            indexMappings_.try_emplace(std::pair(name, mapping.count), mapping.line);
        const auto entries =
            "entries of " + name + " with " + std::to_string(mapping.count) + " indices";
        const auto beyond = " refers to an index that " + entries + " do not have";
        if (!isNew)
            warnings_.add(mapping.place, "repeated-mapping",
                          entries + " have an index mapping already, on line " +
                              std::to_string(first->second) + ", which counts");
        for (const auto& [indexName, element] : mapping.pairs) {
            const std::string text(element);
            const auto position = PresetTranslate::referredPosition(text);
            if (position && *position >= mapping.count)
                warnings_.add(element, "no-such-position", text + beyond);
            else if (!position)
                checkConstant(indexName, element);
        }
    }

    void checkConstant(std::string_view indexName, std::string_view value) {
        const auto index = manager_.indices().find(indexName);
        if (index == manager_.indices().end())
            return; // then the parameter has no key
        const auto& values = index->second;
        if (std::find(values.begin(), values.end(), value) == values.end())
            warnings_.addAbsence(value, "no-such-value",
                                 "index " + std::string(indexName) + " does not have the value " +
                                     std::string(value));
    }

    const PresetManager& manager_;
    WarningList& warnings_;
    std::map<std::string, std::uint32_t> oldNames_;
    std::map<std::pair<std::string, std::uint32_t>, std::uint32_t> indexMappings_;
};

} // namespace

std::vector<Warning> translateWarnings(const PresetDefinitions& presets,
                                       const PresetManager& manager) {
    WarningList warnings(Warning::File::presets, *presets.text);
    TranslateCheck check(manager, warnings);
    for (const auto& section : presets.translateSections) {
        for (const auto& mapping : section.mappings)
            check.check(mapping);
    }
    return warnings.take();
}

} // namespace morvane::ctl
