#include "engine/preset_translate.h"

#include "core/preset_manager.h"
#include "text/number.h"

#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

namespace morvane {

namespace {

// What an element stands for: itself, or the old index that it refers to; nothing if the entry has
// no index there.
std::optional<std::string_view> indexOf(const std::string& element, const PresetEntry& entry) {
    const auto position = PresetTranslate::referredPosition(element);
    if (!position)
        return element;
    if (*position >= entry.indices.size())
        return std::nullopt;
    return entry.indices[*position];
}

void reportMissingIndex(const std::string& element, const PresetEntry& entry) {
    // The blank that is missing before "with" is part of the text that people search for.
    std::fprintf(stderr,
                 "PresetTranslate::translate() Error:Could not locate index value for %s "
                 "for parameter %swith %d indices\n",
                 element.c_str(), std::string(entry.name).c_str(),
                 static_cast<int>(entry.indices.size()));
}

void reportMissingTemplate(const PresetEntry& entry) {
    std::fprintf(stderr,
                 "PresetTranslate::translate() Error:Could not located index mapping for %s "
                 "with %d indices\n",
                 std::string(entry.name).c_str(), static_cast<int>(entry.indices.size()));
}

std::optional<std::vector<std::string_view>>
newIndices(const PresetEntry& entry, const IndexTemplate& elements, Reports reports) {
    std::vector<std::string_view> indices;
    for (const auto& element : elements) {
        const auto index = indexOf(element, entry);
        if (!index) {
            if (reports == Reports::on)
                reportMissingIndex(element, entry);
            return std::nullopt;
        }
        indices.push_back(*index);
    }
    return indices;
}

void mapName(const TranslationTables& tables, PresetEntry& entry) {
    const auto mapping = tables.nameMappings.find(entry.name);
    if (mapping == tables.nameMappings.end())
        return;
    const auto& [newName, values] = mapping->second;
    entry.name = newName;
    if (const auto value = values.find(entry.value); value != values.end())
        entry.value = value->second;
}

} // namespace

std::optional<std::size_t> PresetTranslate::referredPosition(std::string_view element) {
    constexpr std::string_view reference = "idx::";
    const auto found = element.find(reference);
    if (found == std::string_view::npos)
        return std::nullopt;
    // A negative number becomes a huge one, where there is no index either.
    return static_cast<std::size_t>(leadingDecimal(element.substr(found + reference.size())));
}

PresetEntry PresetTranslate::translate(PresetEntry entry, const IndexMaps& indexMaps,
                                       Reports reports) {
    const auto found = indexMaps.find(entry.name);
    if (found == indexMaps.end())
        return entry;
    const auto& templates = found->second;
    const auto count = entry.indices.size();
    if (count == templates.begin()->second.size())
        return entry;
    const auto elements = templates.find(count);
    if (elements == templates.end()) {
        if (reports == Reports::on)
            reportMissingTemplate(entry);
        return {};
    }
    auto indices = newIndices(entry, elements->second, reports);
    if (!indices)
        return {};
    entry.indices = *std::move(indices);
    return entry;
}

bool translateEntry(const TranslationTables& tables, PresetEntry& entry, Reports reports) {
    mapName(tables, entry);
    if (tables.removed.contains(entry.name))
        return false;
    if (!tables.indexMaps.empty())
        entry = PresetTranslate::translate(std::move(entry), tables.indexMaps, reports);
    return true;
}

bool isOfKnownParameter(const PresetManager& manager, const PresetEntry& entry) {
    return entry.name.empty() || manager.isParameter(entry.name);
}

} // namespace morvane
