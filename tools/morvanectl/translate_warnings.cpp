// Warnings about the translate sections of the preset definition file.

#include "engine/preset_translate.h"
#include "text/number.h"
#include "warnings.h"

#include <map>
#include <set>
#include <utility>

namespace morvane::ctl {

namespace {

/// Collects the warnings about the translate sections of one variant.
class TranslateCheck {
public:
    TranslateCheck(const PresetManager& manager, std::vector<Warning>& warnings)
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
            add(mapping.line, name, "no parameter " + name + consequence);
        }
        for (const auto& from : mapping.fromMappings)
            checkOldName(from);
        for (const auto& indexMapping : mapping.indexMappings)
            checkIndexMapping(name, indexMapping);
    }

private:
    void add(std::uint32_t line, const std::string& word, const std::string& text) {
        warnings_.push_back({Warning::File::presets, line, word, text, {}});
    }

    void checkOldName(const FromMapping& from) {
        const std::string name(from.oldName);
        const auto [first, isNew] = oldNames_.try_emplace(name, from.line);
        if (!isNew)
            add(from.line, name,
                name + " has a mapping already, on line " + std::to_string(first->second) +
                    ", which counts");
    }

    void checkIndexMapping(const std::string& name, const IndexMapping& mapping) {
        const auto [first, isNew] =
            indexMappings_.try_emplace(std::pair(name, mapping.count), mapping.line);
        const auto entries =
            "entries of " + name + " with " + std::to_string(mapping.count) + " indices";
        const auto beyond = " refers to an index that " + entries + " do not have";
        if (!isNew)
            add(mapping.line, "index",
                entries + " have an index mapping already, on line " +
                    std::to_string(first->second) + ", which counts");
        for (const auto& [indexName, element] : mapping.pairs) {
            const std::string text(element);
            const auto position = PresetTranslate::referredPosition(text);
            if (position && *position >= mapping.count)
                add(mapping.line, std::string(indexName), text + beyond);
        }
    }

    const PresetManager& manager_;
    std::vector<Warning>& warnings_;
    std::map<std::string, std::uint32_t> oldNames_;
    std::map<std::pair<std::string, std::uint32_t>, std::uint32_t> indexMappings_;
};

} // namespace

std::vector<Warning> translateWarnings(const PresetDefinitions& presets,
                                       const PresetManager& manager) {
    std::vector<Warning> warnings;
    TranslateCheck check(manager, warnings);
    for (const auto& section : presets.translateSections) {
        for (const auto& mapping : section.mappings)
            check.check(mapping);
    }
    return warnings;
}

} // namespace morvane::ctl
