#include "engine/preset_entry.h"

namespace morvane {

namespace {

// Blanks are not trimmed: a value may end in blanks, and is read back as it was stored.
constexpr bool isTrimmed(char c) {
    return c == '\t' || c == '\f' || c == '\v' || c == '\n' || c == '\r';
}

struct KeyParts {
    std::string_view name;
    bool isCanonical; ///< nothing is dropped from the key
};

// Passes the text in each closed group of a key to `use`.
template <typename Use>
KeyParts splitKey(std::string_view key, Use use) {
    auto open = key.find('[');
    const auto name = key.substr(0, open);
    auto size = name.size(); // of the canonical key
    while (open != std::string_view::npos) {
        const auto close = key.find(']', open);
        if (close == std::string_view::npos)
            break;
        const auto index = key.substr(open + 1, close - open - 1);
        use(index);
        size += index.size() + 2;
        open = key.find('[', close + 1);
    }
    return {name, size == key.size()};
}

void appendIndex(std::string_view index, std::string& key) {
    key += '[';
    key += index;
    key += ']';
}

} // namespace

std::string_view trimEnd(std::string_view text) {
    while (!text.empty() && isTrimmed(text.back()))
        text.remove_suffix(1);
    return text;
}

void parsePresetKey(std::string_view key, PresetEntry& entry) {
    const auto text = trimEnd(key);
    entry.indices_.clear();
    const auto [name, isCanonical] =
        splitKey(text, [&](std::string_view index) { entry.indices_.push_back(index); });
    entry.name_ = name;
    entry.value_ = {};
    entry.canonicalText_ = isCanonical && !name.empty() ? text : std::string_view();
}

void parsePresetLine(std::string_view line, PresetEntry& entry) {
    const auto text = trimEnd(line);
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) {
        parsePresetKey({}, entry);
        return;
    }
    parsePresetKey(text.substr(0, equals), entry);
    entry.setValue(text.substr(equals + 1));
}

std::string_view PresetEntry::key(std::string& buffer) const {
    if (!canonicalText_.empty() || name_.empty())
        return canonicalText_;
    buffer = name_;
    for (const auto index : indices_)
        appendIndex(index, buffer);
    return buffer;
}

std::string presetKey(const PresetEntry& entry) {
    std::string buffer;
    return std::string(entry.key(buffer));
}

std::string_view canonicalKey(std::string_view key, std::string& buffer) {
    const auto text = trimEnd(key);
    const auto [name, isCanonical] = splitKey(text, [](std::string_view) {});
    if (name.empty())
        return {};
    if (isCanonical)
        return text;
    buffer = name;
    splitKey(text, [&](std::string_view index) { appendIndex(index, buffer); });
    return buffer;
}

void formatPresetLine(const PresetEntry& entry, std::string& line) {
    const auto key = entry.key(line);
    if (key.data() != line.data()) // else it has been assembled there
        line = key;
    line += '=';
    line += entry.value();
}

} // namespace morvane
