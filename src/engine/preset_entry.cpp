#include "engine/preset_entry.h"

namespace morvane {

namespace {

// Blanks are not among them: a value may end in blanks, and they come back as they were stored.
constexpr bool isTrimmed(char c) {
    return c == '\t' || c == '\f' || c == '\v' || c == '\n' || c == '\r';
}

std::string_view trimEnd(std::string_view text) {
    auto end = text.size();
    while (end > 0 && isTrimmed(text[end - 1]))
        --end;
    return text.substr(0, end);
}

} // namespace

void parsePresetKey(std::string_view key, PresetEntry& entry) {
    const auto text = trimEnd(key);
    auto open = text.find('[');
    entry.name = text.substr(0, open);
    entry.indices.clear();
    entry.value = {};
    auto end = entry.name.size(); // of what the canonical key has of the text
    bool isCanonical = true;
    while (open != std::string_view::npos) {
        const auto close = text.find(']', open);
        if (close == std::string_view::npos)
            break;
        entry.indices.push_back(text.substr(open + 1, close - open - 1));
        isCanonical = isCanonical && open == end;
        end = close + 1;
        open = text.find('[', end);
    }
    isCanonical = isCanonical && end == text.size() && !entry.name.empty();
    entry.writtenKey = isCanonical ? text : std::string_view();
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

std::string_view presetKey(const PresetEntry& entry, std::string& buffer) {
    if (!entry.writtenKey.empty() || entry.name.empty())
        return entry.writtenKey;
    buffer = entry.name;
    for (const auto index : entry.indices) {
        buffer += '[';
        buffer += index;
        buffer += ']';
    }
    return buffer;
}

std::string presetKey(const PresetEntry& entry) {
    std::string buffer;
    return std::string(presetKey(entry, buffer));
}

void formatPresetLine(const PresetEntry& entry, std::string& line) {
    const auto key = presetKey(entry, line);
    if (key.data() != line.data()) // else it has been put together there
        line = key;
    line += '=';
    line += entry.value;
}

} // namespace morvane
