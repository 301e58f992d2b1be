#include "engine/load_plan.h"

#include "core/preset_manager.h"
#include "engine/preset_translate.h"

#include <algorithm>

namespace morvane {

LoadPlan::LoadPlan(const PresetManager& manager, const KeySet& presetKeys)
    : manager_(manager),
      presetKeys_(presetKeys.keys()),
      search_(presetKeys),
      isSet_(presetKeys.size()) {
    values_.reserve(presetKeys.size()); // as many as a stored file has, unless it is a sub-preset
}

void LoadPlan::add(PresetEntry& entry) {
    if (!translateEntry(manager_.translation(), entry))
        return;
    const auto place = search_.find(entry.key(key_));
    if (!place) {
        empty_ = empty_ && !isOfKnownParameter(manager_, entry);
        return;
    }
    empty_ = false;
    isSet_[*place] = true;
    auto& list = manager_.isReadOnly(entry.name()) ? statusValues_ : values_;
    list.emplace_back(presetKeys_[*place], kept(entry.value()));
}

KeysToReset LoadPlan::unsetKeys() const {
    KeysToReset unset;
    for (std::size_t i = 0; i < presetKeys_.size(); ++i) {
        if (isSet_[i])
            continue;
        auto& list = isReadOnlyParameter(presetKeys_[i]) ? unset.statusKeys : unset.keys;
        list.emplace_back(presetKeys_[i]);
    }
    return unset;
}

bool LoadPlan::isReadOnlyParameter(std::string_view key) const {
    return manager_.isReadOnly(key.substr(0, key.find('[')));
}

// A copy that stays until the values have been sent.
CStringView LoadPlan::kept(std::string_view value) {
    auto* const copy = static_cast<char*>(texts_.allocate(value.size() + 1, 1));
    *std::copy(value.begin(), value.end(), copy) = '\0';
    return {copy, value.size()};
}

} // namespace morvane
