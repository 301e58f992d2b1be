#include "engine/preset_entry.h"

namespace morvane {

namespace {

// Blanks are not among them: a value may end in blanks, and they come back as they were stored.
std::string_view trimEnd(std::string_view text) {
    const auto last = text.find_last_not_of("\t\f\v\n\r");
    return last == std::string_view::npos ? text : text.substr(0, last + 1);
}

} // namespace

PresetEntry parsePresetKey(std::string_view key) {
    const auto text = trimEnd(key);
    auto open = text.find('[');
    PresetEntry entry;
    entry.name = text.substr(0, open);
    while (open != std::string_view::npos) {
        const auto close = text.find(']', open);
        if (close == std::string_view::npos)
            break;
        entry.indices.emplace_back(text.substr(open + 1, close - open - 1));
        open = text.find('[', close);
    }
    return entry;
}

PresetEntry parsePresetLine(std::string_view line) {
    const auto text = trimEnd(line);
    const auto equals = text.find('=');
    if (equals == std::string_view::npos)
        return {};
    auto entry = parsePresetKey(text.substr(0, equals));
    entry.value = text.substr(equals + 1);
    return entry;
}

std::string presetKey(const PresetEntry& entry) {
    if (entry.name.empty())
        return {};
    std::string key = entry.name;
    for (const auto& index : entry.indices)
        key.append("[").append(index).append("]");
    return key;
}

std::string formatPresetLine(const PresetEntry& entry) {
    return presetKey(entry) + "=" + entry.value;
}

} // namespace morvane
