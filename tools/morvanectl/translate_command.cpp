// morvanectl translate: what becomes of each line of a preset data file when it is loaded.

#include "commands.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "output.h"
#include "text/cursor.h"
#include "variant.h"

#include <iostream>

namespace morvane::ctl {

namespace {

struct TranslatedLine {
    std::uint32_t number;
    std::string before; ///< the line as it was read
    std::string after;  ///< empty if it is not loaded
    std::string what;   ///< what was done, or why it is not loaded
};

std::string changes(const PresetEntry& before, const PresetEntry& after) {
    std::vector<std::string> what;
    if (after.name != before.name)
        what.emplace_back("renamed");
    if (after.value != before.value)
        what.emplace_back("value mapped");
    if (after.indices != before.indices)
        what.emplace_back("re-indexed");
    return what.empty() ? "kept" : joined(what, ", ");
}

std::string reasonForDropping(const PresetEntry& entry, const PresetManager& manager) {
    const auto& [removed, nameMappings, indexMaps] = manager.translation();
    const auto mapping = nameMappings.find(entry.name);
    const std::string name(mapping == nameMappings.end() ? entry.name : mapping->second.newName);
    return removed.contains(name) ? "dropped: " + name + " is in a removed list"
                                  : "dropped: no parameter " + name + " on this variant";
}

TranslatedLine translateLine(std::string_view line, std::uint32_t number,
                             const PresetManager& manager) {
    TranslatedLine result{number, std::string(trimSpace(line)), {}, {}};
    PresetEntry entry;
    parsePresetLine(line, entry);
    if (entry.name.empty() || entry.value.empty()) {
        result.what = "skipped: not NAME=VALUE";
        return result;
    }
    auto translated = entry;
    if (!translateEntry(manager.translation(), translated) ||
        !isOfKnownParameter(manager, translated)) {
        result.what = reasonForDropping(entry, manager);
    } else if (translated.name.empty()) {
        result.what =
            "dropped: its " + std::to_string(entry.indices.size()) + " indices cannot be mapped";
    } else {
        result.after = formatPresetLine(translated);
        result.what = changes(entry, translated);
    }
    return result;
}

void writeLines(const std::vector<TranslatedLine>& lines) {
    for (const auto& [number, before, after, what] : lines) {
        std::cout << number << ": " << before;
        if (!after.empty() && after != before)
            std::cout << " -> " << after;
        std::cout << " (" << what << ")\n";
    }
}

void writeLinesAsJson(const std::vector<TranslatedLine>& lines) {
    auto list = Json::array();
    for (const auto& [number, before, after, what] : lines)
        list.push_back({{"line", number},
                        {"before", before},
                        {"after", after.empty() ? Json() : Json(after)},
                        {"what", what}});
    writeJson(list);
}

} // namespace

ExitStatus translateFile(const Settings& settings) {
    const auto variant = readVariant(settings);
    if (!variant)
        return ExitStatus::error;
    const auto stream = openDataFile(settings.file);
    if (!stream)
        return ExitStatus::error;
    std::vector<TranslatedLine> lines;
    LineReader<presetLineBufferSize> reader(stream.get());
    while (const auto line = reader.next()) {
        const auto number = static_cast<std::uint32_t>(lines.size() + 1);
        lines.push_back(translateLine(*line, number, variant->manager));
    }
    settings.json ? writeLinesAsJson(lines) : writeLines(lines);
    return ExitStatus::yes;
}

} // namespace morvane::ctl
