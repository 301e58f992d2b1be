// morvanectl explain: why a key is or is not in a preset, down to the clause that decides.

#include "commands.h"
#include "condition_text.h"
#include "engine/preset_entry.h"
#include "output.h"
#include "preset_reasons.h"
#include "tables/valid_values.h"
#include "text/number.h"
#include "variant.h"

#include <algorithm>
#include <iostream>

namespace morvane::ctl {

namespace {

PresetEntry keyOf(const std::string& text) {
    PresetEntry key;
    parsePresetKey(text, key);
    return key;
}

/// Gathers the reasons for one key and one preset.
class Explanation {
public:
    Explanation(const Settings& settings, const Variant& variant)
        : settings_(settings),
          parameters_(variant.definitions.parameters),
          arguments_(variant.arguments),
          presets_(variant.definitions.presets.presets),
          manager_(variant.manager),
          key_(keyOf(settings.key)) {}

    const std::vector<std::string>& lines() const { return lines_; }

    void explain() {
        if (explainForm() && explainParameter())
            explainPreset();
    }

private:
    static std::string at(const std::string& file, std::uint32_t line) {
        return file + ":" + std::to_string(line) + ": ";
    }

    void add(const std::string& file, std::uint32_t line, const std::string& text) {
        lines_.push_back(at(file, line) + text);
    }

    // A text is a key if a load that reads it has the same text.
    bool explainForm() {
        const auto& text = settings_.key;
        const auto key = presetKey(keyOf(text.substr(0, text.find('='))));
        if (key == text && !key.empty())
            return true;
        const auto* const why = key.empty()                    ? "it has no name"
                                : text.find('=') < text.size() ? "a load reads a line with the key "
                                                               : "a load reads it as ";
        lines_.push_back(text + " is no key: " + why + key);
        return false;
    }

    // Says whether the parameter and this instance of it exist on this variant.
    bool explainParameter() {
        const auto* const parameter = parameters_.find(key_.name);
        if (parameter == nullptr) {
            lines_.push_back("no parameter " + std::string(key_.name) + " in " +
                             settings_.paramDefFile);
            return false;
        }
        const auto* const article = parameter->access == AccessType::ACCESS_INDEX ? "an " : "";
        add(settings_.paramDefFile, parameter->line,
            std::string(parameter->name) + " is " + article + keywordOf(parameter->access));
        bool exists = true;
        for (const auto& condition : parameter->ctrlValid)
            exists = explainCondition(condition) && exists;
        if (!exists)
            return false;
        if (parameter->access == AccessType::ACCESS_WO ||
            parameter->access == AccessType::ACCESS_INDEX) {
            lines_.emplace_back("a preset covers ro, rostrict and rw parameters only");
            return false;
        }
        return explainIndices(*parameter);
    }

    bool explainCondition(const Expression& condition, const char* attribute = "ctrlValid") {
        const auto line = condition.empty() ? 0 : condition.tokens.front().line;
        add(settings_.paramDefFile, line, outcomeOf(attribute, condition, parameters_, arguments_));
        return conditionHolds(condition, parameters_, arguments_);
    }

    bool explainIndices(const SystemParameter& parameter) {
        if (parameter.indices.size() != key_.indices.size()) {
            lines_.push_back(std::string(parameter.name) + " has " +
                             std::to_string(parameter.indices.size()) + " indices, " +
                             settings_.key + " has " + std::to_string(key_.indices.size()));
            return false;
        }
        bool all = true;
        for (std::size_t i = 0; i < key_.indices.size(); ++i)
            all = explainIndex(std::string(parameter.indices[i].indexName()),
                               std::string(key_.indices[i])) &&
                  all;
        return all;
    }

    bool explainIndex(const std::string& name, const std::string& value) {
        const auto* const index = parameters_.find(name);
        if (index == nullptr || index->access != AccessType::ACCESS_INDEX) {
            lines_.push_back("no index " + name + " in " + settings_.paramDefFile);
            return false;
        }
        for (const auto& condition : index->ctrlValid)
            explainCondition(condition);
        const auto found = manager_.indices().find(name);
        if (found == manager_.indices().end()) {
            add(settings_.paramDefFile, index->line,
                "index " + name + " does not exist on this variant");
            return false;
        }
        explainRanges(*index, value);
        const auto& values = found->second;
        const bool has = std::find(values.begin(), values.end(), value) != values.end();
        add(settings_.paramDefFile, index->line,
            "index " + name +
                (has ? " has the value " + value
                     : " has " + (values.empty() ? "no value" : shortList(values)) +
                           ", which is not " + value));
        // An include list may name values that the index does not have.
        return has || manager_.isReadOnly(key_.name);
    }

    // The conditions that give the index the value, or withhold it.
    void explainRanges(const SystemParameter& index, const std::string& value) {
        for (const auto& range : index.rangeValid) {
            const bool hasValue =
                std::any_of(range.items.begin(), range.items.end(), [&](const RangeItem& item) {
                    const auto stands = itemValue(item, arguments_);
                    return stands && isIndexValue(*stands, value);
                });
            if (hasValue && !range.condition.empty())
                explainCondition(range.condition, "rangeValid");
        }
    }

    // An index has its numbers in decimal notation alone.
    static bool isIndexValue(const ValidValue& item, const std::string& value) {
        const auto number = wholeDecimal(value);
        return standsFor(item, value) && (std::holds_alternative<std::string>(item) ||
                                          (number && decimalText(*number) == value));
    }

    void explainPreset() {
        bool isDefined = false;
        bool isUsed = false;
        for (const auto& preset : presets_) {
            if (preset.name != settings_.preset)
                continue;
            isDefined = true;
            if (isUsed) {
                add(settings_.presetDefFile, preset.line,
                    "a preset of this name stands before this one, which is not used");
                continue;
            }
            explainLists(preset);
            isUsed = coversKeys(preset, manager_);
            if (!isUsed)
                add(settings_.presetDefFile, preset.line,
                    "this preset covers no key on this variant, so it is not used");
        }
        if (!isDefined)
            lines_.push_back("no preset " + settings_.preset + " in " + settings_.presetDefFile);
    }

    void explainLists(const PresetDefinition& preset) {
        const bool includes = manager_.isReadOnly(key_.name);
        add(settings_.presetDefFile, preset.line,
            includes ? "read-only parameters are in a preset if an include list adds them"
                     : "read-write parameters are in a preset unless an exclude list takes them "
                       "away");
        const PresetReasons reasons(preset, manager_);
        bool any = false;
        for (const auto& [number, keys] : reasons.selectionsOf(key_.name)) {
            if (!keys.contains(settings_.key))
                continue;
            any = true;
            add(settings_.presetDefFile, reasons.parts()[number].line, reasons.textOf(number));
        }
        if (!any)
            lines_.emplace_back(reasons.textOfNone(includes));
    }

    const Settings& settings_;
    const SystemParameterTable& parameters_;
    const SystemArguments& arguments_;
    const std::vector<PresetDefinition>& presets_;
    const PresetManager& manager_;
    PresetEntry key_;
    std::vector<std::string> lines_;
};

} // namespace

ExitStatus explainKey(const Settings& settings) {
    const auto variant = readVariant(settings);
    if (!variant)
        return ExitStatus::error;
    const bool covered = variant->manager.in_preset(settings.key, settings.preset);
    Explanation explanation(settings, *variant);
    explanation.explain();
    if (settings.json) {
        writeJson({{"key", settings.key},
                   {"preset", settings.preset},
                   {"covered", covered},
                   {"reasons", explanation.lines()}});
    } else {
        std::cout << settings.key << (covered ? " is in " : " is not in ") << settings.preset
                  << '\n';
        for (const auto& line : explanation.lines())
            std::cout << "    " << line << '\n';
    }
    return covered ? ExitStatus::yes : ExitStatus::no;
}

} // namespace morvane::ctl
