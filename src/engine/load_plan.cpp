#include "engine/load_plan.h"

#include "core/preset_manager.h"
#include "engine/preset_translate.h"

#include <algorithm>

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
    const auto place = search_.find(text.substr(0, equals));
    if (!place)
        return false;
    const auto& parameter = parameterOf(keyAt(*place));
    if (parameter.isTranslated)
        return false;
    addValue(*place, parameter, text.substr(equals + 1));
    return true;
}

void LoadPlan::add(PresetEntry& entry) {
    if (!translateEntry(manager_.translation(), entry))
        return;
    if (const auto place = search_.find(entry.key(key_)))
        addValue(*place, parameterOf(keyAt(*place)), entry.value());
    else
        empty_ = empty_ && !isOfKnownParameter(manager_, entry);
}

void LoadPlan::addValue(std::size_t place, const Parameter& parameter, std::string_view value) {
    empty_ = false;
    isSet_[place] = true;
    auto& list = parameter.isReadOnly ? statusValues_ : values_;
    list.emplace_back(keyAt(place), kept(value));
}

KeysToReset LoadPlan::unsetKeys() {
    KeysToReset unset;
    std::size_t place = 0;
    for (const CStringView key : presetKeys_) {
        if (!isSet_[place++])
            (parameterOf(key).isReadOnly ? unset.statusKeys : unset.keys).push_back(key);
    }
    return unset;
}

const LoadPlan::Parameter& LoadPlan::parameterOf(CStringView key) {
    const auto text = key.view();
    const auto size = parameter_.name.size();
    if (text.starts_with(parameter_.name) && (text.size() == size || text[size] == '['))
        return parameter_;
    const auto name = text.substr(0, text.find('['));
    parameter_ = {name, manager_.isReadOnly(name), manager_.translation().mentions(name)};
    return parameter_;
}

// A copy that stays until the values have been sent.
CStringView LoadPlan::kept(std::string_view value) {
    auto* const copy = static_cast<char*>(texts_.allocate(value.size() + 1, 1));
    *std::copy(value.begin(), value.end(), copy) = '\0';
    return {copy, value.size()};
}

} // namespace morvane
