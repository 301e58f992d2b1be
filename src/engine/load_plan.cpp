#include "engine/load_plan.h"

#include "core/preset_manager.h"
#include "engine/preset_translate.h"

#include <algorithm>
#include <optional>

namespace morvane {

LoadPlan::LoadPlan(const PresetManager& manager, const KeySet& presetKeys)
    : manager_(manager),
      presetKeys_(presetKeys),
      search_(presetKeys),
      isSet_(presetKeys.size()) {
    values_.reserve(presetKeys.size()); // as many as a stored file has, unless it is a sub-preset
}

bool LoadPlan::addAsWritten(std::string_view line) {
    const auto text = trimEnd(line);
    const auto equals = text.find('=');
    if (!presetKeys_.isCanonical() || equals >= text.size() - 1)
        return false;
    const auto key = text.substr(0, equals);
    const auto& parameter = parameterOf(key);
    const auto place = parameter.isTranslated ? std::nullopt : search_.find(key);
    if (place)
        addValue(*place, parameter.isReadOnly, text.substr(equals + 1));
    return place.has_value();
}

void LoadPlan::add(PresetEntry& entry) {
    if (!translateEntry(manager_.translation(), entry))
        return;
    key_.clear();
    appendPresetKey(entry, key_);
    if (const auto place = search_.find(key_))
        addValue(*place, manager_.isReadOnly(entry.name), entry.value);
    else
        empty_ = empty_ && !isOfKnownParameter(manager_, entry);
}

void LoadPlan::addValue(std::size_t place, bool isReadOnly, std::string_view value) {
    empty_ = false;
    isSet_[place] = true;
    auto& list = isReadOnly ? statusValues_ : values_;
    list.emplace_back(presetKeys_[place], kept(value));
}

KeysToReset LoadPlan::unsetKeys() {
    KeysToReset unset;
    std::size_t place = 0;
    for (const CStringView key : presetKeys_) {
        if (!isSet_[place++])
            (parameterOf(key.view()).isReadOnly ? unset.statusKeys : unset.keys).push_back(key);
    }
    return unset;
}

const LoadPlan::Parameter& LoadPlan::parameterOf(std::string_view key) {
    const auto size = parameter_.name.size();
    if (key.starts_with(parameter_.name) && (key.size() == size || key[size] == '['))
        return parameter_;
    const auto name = key.substr(0, key.find('['));
    parameter_ = {std::string(name), manager_.isReadOnly(name),
                  manager_.translation().mentions(name)};
    return parameter_;
}

// A copy that stays until the values have been sent.
CStringView LoadPlan::kept(std::string_view value) {
    auto* const copy = static_cast<char*>(texts_.allocate(value.size() + 1, 1));
    *std::copy(value.begin(), value.end(), copy) = '\0';
    return {copy, value.size()};
}

} // namespace morvane
