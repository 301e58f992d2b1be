#include "page_data.h"

#include "condition_text.h"
#include "core/preset_manager.h"
#include "html_page.h"
#include "preset_reasons.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

/// The definition that gives a preset its keys: the first of its name that covers one.
const PresetDefinition* definitionOf(std::string_view name, const PresetDefinitions& definitions,
                                     const PresetManager& manager) {
    const auto found = std::find_if(definitions.presets.begin(), definitions.presets.end(),
                                    [&](const PresetDefinition& preset) {
                                        return preset.name == name && coversKeys(preset, manager);
                                    });
    return found == definitions.presets.end() ? nullptr : &*found;
}

/// A condition of a parameter, with the attribute that has it.
struct NamedCondition {
    const char* attribute;
    const Expression* condition;
};

std::vector<NamedCondition> conditionsOf(const SystemParameter& parameter) {
    std::vector<NamedCondition> conditions;
    const auto add = [&conditions](const char* attribute, const Expression& condition) {
        if (!condition.empty())
            conditions.push_back({attribute, &condition});
    };
    for (const auto& condition : parameter.ctrlValid)
        add("ctrlValid", condition);
    for (const auto& condition : parameter.ctrlRO)
        add("ctrlRO", condition);
    for (const auto& range : parameter.rangeValid)
        add("rangeValid", range.condition);
    for (const auto& chosen : parameter.defaults)
        add("default", chosen.condition);
    return conditions;
}

/// Gathers the value, one variant after the other.
class PageData {
public:
    PageData(const Definitions& definitions, const CoverageMatrix& matrix,
             std::span<const std::size_t> parameters)
        : definitions_(definitions),
          matrix_(matrix),
          parameters_(parameters),
          lines_(blockLines(definitions.parameters.text())) {
        for (const auto parameter : parameters)
            addParameter(parameter);
        for (const auto& [name, column] : matrix.presets)
            presets_.push_back({{"name", name}, {"on", Json::array()}});
        for (const auto& variant : matrix.variants)
            addVariant(variant);
    }

    Json take() {
        return {{"variants", std::move(variants_)},   {"indices", std::move(indices_)},
                {"parameters", std::move(shown_)},    {"presets", std::move(presets_)},
                {"decisions", std::move(decisions_)}, {"texts", std::move(texts_)}};
    }

private:
    void addParameter(std::size_t parameter) {
        const auto& row = matrix_.parameters[parameter];
        Json indices = Json::array();
        for (const auto& index : row.definition->indices)
            indices.push_back(indexNumber(std::string(index.indexName())));
        Json keys = Json::array();
        for (const auto& count : row.keys)
            keys.push_back(count ? Json(*count) : Json());
        Json differing = Json::array();
        std::size_t number = 0;
        for (const auto& [name, column] : matrix_.presets) {
            if (column.differs(parameter))
                differing.push_back(number);
            ++number;
        }
        shown_.push_back({{"name", row.definition->name},
                          {"access", keywordOf(row.definition->access)},
                          {"blocks", blocks(row.definition->name)},
                          {"indices", std::move(indices)},
                          {"keys", std::move(keys)},
                          {"groups", Json::array()},
                          {"conditions", conditions(*row.definition)},
                          {"differing", std::move(differing)}});
    }

    // The number of an index, which is added if it is new.
    std::size_t indexNumber(const std::string& name) {
        const auto [number, isNew] = indexNumbers_.add(name);
        if (isNew) {
            const auto* const index = definitions_.parameters.find(name);
            indices_.push_back(
                {{"name", name},
                 {"blocks", blocks(name)},
                 {"values", Json::array()},
                 {"conditions", index == nullptr ? Json::array() : conditions(*index)}});
        }
        return number;
    }

    Json blocks(std::string_view name) const {
        return blocksOf(name, definitions_.parameters.text(), lines_);
    }

    Json conditions(const SystemParameter& parameter) {
        Json list = Json::array();
        for (const auto& [attribute, condition] : conditionsOf(parameter)) {
            Json outcomes = Json::array();
            for (const auto& variant : matrix_.variants) {
                const auto text =
                    outcomeOf(attribute, *condition, definitions_.parameters, variant.arguments);
                const auto [number, isNew] = textNumbers_.add(text);
                if (isNew)
                    texts_.push_back(text);
                outcomes.push_back(number);
            }
            list.push_back(
                {{"line", condition->tokens.front().line}, {"outcomes", std::move(outcomes)}});
        }
        return list;
    }

    void addVariant(const DescribedVariant& variant) {
        variants_.push_back(jsonOf(variant));
        const PresetManager manager(definitions_, variant.arguments);
        for (auto& index : indices_) {
            const auto found = manager.indices().find(index["name"].get_ref<const std::string&>());
            index["values"].push_back(
                found == manager.indices().end() ? Json() : Json(joined(found->second, ", ")));
        }
        const auto groups = groupsOn(manager);
        std::size_t number = 0;
        for (const auto& [name, column] : matrix_.presets) {
            const auto* const definition = definitionOf(name, definitions_.presets, manager);
            presets_[number]["on"].push_back(
                definition == nullptr ? Json() : presetOn(*definition, manager, groups));
            ++number;
        }
    }

    // By parameter that is shown. Groups of both maps are numbered together.
    std::vector<std::optional<std::size_t>> groupsOn(const PresetManager& manager) {
        std::vector<std::optional<std::size_t>> groups;
        for (std::size_t i = 0; i < parameters_.size(); ++i) {
            const auto name = matrix_.parameters[parameters_[i]].definition->name;
            groups.emplace_back();
            if (const auto place = manager.readOnly().find(name))
                groups.back() = manager.readOnly().group(*place);
            else if (const auto other = manager.readWrite().find(name))
                groups.back() =
                    manager.readOnly().groups().size() + manager.readWrite().group(*other);
            shown_[i]["groups"].push_back(groups.back() ? Json(*groups.back()) : Json());
        }
        return groups;
    }

    Json presetOn(const PresetDefinition& definition, const PresetManager& manager,
                  const std::vector<std::optional<std::size_t>>& groups) {
        PresetReasons reasons(definition, manager);
        Json parts = Json::array();
        for (std::size_t part = 0; part < reasons.parts().size(); ++part)
            parts.push_back({{"line", reasons.parts()[part].line}, {"text", reasons.textOf(part)}});
        std::map<std::size_t, std::size_t> ofGroup;
        std::vector<std::pair<std::size_t, std::size_t>> ofItem;
        for (std::size_t i = 0; i < parameters_.size(); ++i) {
            const auto name = matrix_.parameters[parameters_[i]].definition->name;
            if (!groups[i])
                continue;
            if (reasons.hasItem(name))
                ofItem.emplace_back(i, decision(reasons.of(name), name, manager));
            else if (!ofGroup.contains(*groups[i]))
                ofGroup[*groups[i]] = decision(reasons.of(name), name, manager);
        }
        return {{"line", definition.line},
                {"parts", std::move(parts)},
                {"none",
                 {{"ro", reasons.textOfNone(/*isReadOnly=*/true)},
                  {"rw", reasons.textOfNone(/*isReadOnly=*/false)}}},
                {"groups", Json(ofGroup)},
                {"items", Json(ofItem)}};
    }

    // The number of a decision, which is added if it is new.
    std::size_t decision(const std::vector<DecidedKeys>& decided, std::string_view parameter,
                         const PresetManager& manager) {
        const auto own = instancesOf(parameter, manager);
        CoveredKeys covered;
        Json keys = Json::array();
        for (const auto& [areCovered, parts, endings] : decided) {
            std::vector<std::string> existing;
            std::vector<std::string> unknown;
            for (const auto& ending : endings)
                (own.contains(std::string(parameter) + ending) ? existing : unknown)
                    .push_back(ending);
            if (!existing.empty())
                keys.push_back(Json::array({areCovered ? "in" : "out", parts, existing}));
            if (!unknown.empty())
                keys.push_back(Json::array({"unknown", parts, unknown}));
            covered.own += areCovered ? existing.size() : 0;
            covered.unknown += unknown.size();
        }
        Json whole{{"own", covered.own}, {"unknown", covered.unknown}, {"keys", std::move(keys)}};
        const auto [number, isNew] =
            decisionNumbers_.add(whole.dump(-1, ' ', false, Json::error_handler_t::replace));
        if (isNew)
            decisions_.push_back(std::move(whole));
        return number;
    }

    const Definitions& definitions_;
    const CoverageMatrix& matrix_;
    std::span<const std::size_t> parameters_;
    BlockLines lines_;
    Json variants_ = Json::array();
    Json indices_ = Json::array();
    Numbering indexNumbers_;
    Json shown_ = Json::array();
    Json presets_ = Json::array();
    Json decisions_ = Json::array();
    Numbering decisionNumbers_;
    Json texts_ = Json::array();
    Numbering textNumbers_;
};

} // namespace

Json pageData(const Definitions& definitions, const CoverageMatrix& matrix,
              std::span<const std::size_t> parameters) {
    return PageData(definitions, matrix, parameters).take();
}

} // namespace morvane::ctl
