#include "engine/preset_entry.h"

namespace morvane {

namespace {

// Blanks are not trimmed: a value may end in blanks, and is read back as it was stored.
constexpr bool isTrimmed(char c) {
    return c == '\t' || c == '\f' || c == '\v' || c == '\n' || c == '\r';
}

} // namespace

std::string_view trimEnd(std::string_view text) {
    while (!text.empty() && isTrimmed(text.back()))
        text.remove_suffix(1);
    return text;
}

void parsePresetKey(std::string_view key, PresetEntry& entry) {
    const auto text = trimEnd(key);
    auto open = text.find('[');
    entry.name = text.substr(0, open);
    entry.indices.clear();
    entry.value = {};
    while (open != std::string_view::npos) {
        const auto close = text.find(']', open);
        if (close == std::string_view::npos)
            break;
        entry.indices.push_back(text.substr(open + 1, close - open - 1));
        open = text.find('[', close + 1);
    }
}

void parsePresetLine(std::string_view line, PresetEntry& entry) {
    const auto text = trimEnd(line);
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) {
        parsePresetKey({}, entry);
        return;
    }
    parsePresetKey(text.substr(0, equals), entry);
    entry.value = text.substr(equals + 1);
}

std::string presetKey(const PresetEntry& entry) {
    std::string key;
    appendPresetKey(entry, key);
    return key;
}

void appendPresetKey(const PresetEntry& entry, std::string& text) {
    if (entry.name.empty())
        return;
    text += entry.name;
    for (const auto index : entry.indices)
        text.append(1, '[').append(index).append(1, ']');
}

std::string formatPresetLine(const PresetEntry& entry) {
    return presetKey(entry).append(1, '=').append(entry.value);
}

} // namespace morvane
