#include "preset_reasons.h"

#include "tables/preset_keys.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace morvane::ctl {

namespace {

using Kind = PresetList::Kind;

bool isIncludedAll(const PresetPart& part) {
    return part.kind == Kind::include && part.alone.includeLists.front().all;
}

const ParameterMap& mapOf(std::string_view parameter, const PresetManager& manager) {
    return manager.isReadOnly(parameter) ? manager.readOnly() : manager.readWrite();
}

} // namespace

KeySet instancesOf(std::string_view parameter, const PresetManager& manager) {
    const auto& map = mapOf(parameter, manager);
    return PresetGenerate::parameterKeys(manager.indices(), parameter,
                                         map.indexNames(*map.find(parameter)));
}

bool coversKeys(const PresetDefinition& preset, const PresetManager& manager) {
    return !PresetGenerate::keySet(manager.indices(), manager.readWrite(), manager.readOnly(),
                                   preset)
                .empty();
}

PresetReasons::PresetReasons(const PresetDefinition& preset, const PresetManager& manager)
    : manager_(manager),
      parts_(partsOf(preset)),
      includedAll_(static_cast<std::size_t>(
          std::find_if(parts_.begin(), parts_.end(), isIncludedAll) - parts_.begin())),
      keys_(PresetGenerate::keySet(manager.indices(), manager.readWrite(), manager.readOnly(),
                                   preset)) {
    for (std::size_t i = 0; i < parts_.size(); ++i)
        (parts_[i].item.empty() ? ofAll_ : ofItems_[parts_[i].item]).push_back(i);
}

std::string PresetReasons::textOf(std::size_t part) const {
    return (parts_[part].kind == Kind::include ? "added by the include list: "
                                               : "taken away by the exclude list: ") +
           parts_[part].text;
}

const char* PresetReasons::textOfNone(bool isReadOnly) const {
    if (!isReadOnly)
        return "no exclude list takes it away";
    return includedAll_ < parts_.size() ? "an include list has all, which adds the values that the "
                                          "indices have, and no others"
                                        : "no include list adds it";
}

// Those that name the parameter and those that name none, in order.
std::vector<std::size_t> PresetReasons::partsAbout(std::string_view parameter) const {
    const auto own = ofItems_.find(parameter);
    if (own == ofItems_.end())
        return ofAll_;
    std::vector<std::size_t> parts;
    std::merge(ofAll_.begin(), ofAll_.end(), own->second.begin(), own->second.end(),
               std::back_inserter(parts));
    return parts;
}

// Of a list that includes all, nothing else counts, nor do the lists after it: not even index
// values that the index does not have. What stands before it counts.
std::vector<PartSelection> PresetReasons::selectionsOf(std::string_view parameter) const {
    const auto& map = mapOf(parameter, manager_);
    const auto kind = manager_.isReadOnly(parameter) ? Kind::include : Kind::exclude;
    const ParameterMap alone{{parameter, map.indexNames(*map.find(parameter))}};
    std::vector<PartSelection> selections;
    for (const auto i : partsAbout(parameter)) {
        const auto& part = parts_[i];
        const bool counts = kind == Kind::exclude || i <= includedAll_;
        if (part.kind != kind || !counts)
            continue;
        auto keys = selectedKeys(part, manager_, alone);
        if (!keys.empty())
            selections.push_back({i, std::move(keys)});
    }
    return selections;
}

// The parameters of a group have the same instances: one of them stands for those without an item.
const std::vector<DecidedKeys>& PresetReasons::of(std::string_view parameter) {
    static const std::vector<DecidedKeys> nothing;
    const auto& map = mapOf(parameter, manager_);
    const auto place = map.find(parameter);
    if (!place)
        return nothing;
    if (hasItem(parameter)) {
        const auto [known, isNew] = ofItem_.try_emplace(std::string(parameter));
        if (isNew)
            known->second = decidedKeys(parameter);
        return known->second;
    }
    const auto [known, isNew] = ofGroup_.try_emplace({&map, map.group(*place)});
    if (isNew)
        known->second = decidedKeys(parameter);
    return known->second;
}

std::vector<DecidedKeys> PresetReasons::decidedKeys(std::string_view parameter) const {
    const auto selections = selectionsOf(parameter);
    const auto own = instancesOf(parameter, manager_);
    std::set<std::string_view> keys;
    for (const auto key : own)
        keys.insert(key.view());
    for (const auto& [part, selected] : selections) {
        for (const auto key : selected)
            keys.insert(key.view());
    }
    std::vector<DecidedKeys> decided;
    for (const auto key : keys) {
        DecidedKeys reasons{keys_.contains(key), {}, {}};
        for (const auto& [part, selected] : selections) {
            if (selected.contains(key))
                reasons.parts.push_back(part);
        }
        auto known = std::find_if(decided.begin(), decided.end(), [&](const DecidedKeys& other) {
            return other.areCovered == reasons.areCovered && other.parts == reasons.parts;
        });
        if (known == decided.end())
            known = decided.insert(known, std::move(reasons));
        known->endings.emplace_back(key.substr(parameter.size()));
    }
    return decided;
}
} // namespace morvane::ctl
