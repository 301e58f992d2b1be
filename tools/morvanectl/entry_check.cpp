#include "entry_check.h"

#include "preset_reasons.h"

#include <utility>

namespace morvane::ctl {

TranslatedEntry EntryCheck::translate(PresetEntry entry, Reports reports) {
    TranslatedEntry translated{std::move(entry)};
    if (!translateEntry(manager_.translation(), translated.entry, reports))
        return translated;
    translated.key = presetKey(translated.entry);
    translated.unlessCovered = unlessCovered(translated.entry, translated.key);
    return translated;
}

DropReason EntryCheck::unlessCovered(const PresetEntry& entry, const std::string& key) {
    if (entry.name.empty())
        return DropReason::unmapped;
    if (!manager_.isParameter(entry.name))
        return DropReason::noParameter;
    return isOnDevice(entry.name, key) ? DropReason::notInPreset : DropReason::noInstance;
}

bool EntryCheck::isOnDevice(std::string_view name, std::string_view key) {
    auto found = instances_.find(name);
    if (found == instances_.end())
        found = instances_.emplace(name, instancesOf(name, manager_)).first;
    return found->second.contains(key);
}

} // namespace morvane::ctl
