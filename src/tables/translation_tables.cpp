#include "tables/translation_tables.h"

#include "presetdef/translate_section.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>

namespace morvane {

namespace {

void reportMissing(const char* what, std::string_view name) {
    std::fprintf(stderr, "PresetGenerate::transIndexMapList() Error:Cannot locate %s %s\n", what,
                 std::string(name).c_str());
}

const IndexNames* findParameter(std::string_view name, const ParameterMap& readWrite,
                                const ParameterMap& readOnly) {
    for (const auto* const map : {&readWrite, &readOnly}) {
        if (const auto place = map->find(name))
            return &map->indexNames(*place);
    }
    reportMissing("parameter", name);
    return nullptr;
}

// Pairs for indices that the parameter does not have are ignored.
std::optional<IndexTemplate> templateOf(const IndexMapping& mapping, const IndexNames& indexNames) {
    IndexTemplate indices;
    for (const auto& indexName : indexNames) {
        const auto pair = std::find_if(mapping.pairs.begin(), mapping.pairs.end(),
                                       [&](const auto& p) { return p.first == indexName; });
        if (pair == mapping.pairs.end()) {
            reportMissing("parameter index", indexName);
            return std::nullopt;
        }
        indices.emplace_back(pair->second);
    }
    return indices;
}

std::optional<IndexTemplateMap> templatesOf(const TranslateMapping& mapping,
                                            const IndexNames& indexNames) {
    IndexTemplateMap templates;
    for (const auto& indexMapping : mapping.indexMappings) {
        auto indices = templateOf(indexMapping, indexNames);
        if (!indices)
            return std::nullopt;
        if (!indices->empty())
            templates.try_emplace(indexMapping.count, *std::move(indices));
    }
    return templates;
}

void addNames(const TranslateSection& section, TranslationTables& tables) {
    for (const auto& list : section.removedLists)
        tables.removed.insert(list.names.begin(), list.names.end());
    for (const auto& mapping : section.mappings) {
        for (const auto& from : mapping.fromMappings)
            tables.nameMappings.try_emplace(std::string(from.oldName),
                                            NameMapping{std::string(mapping.newName),
                                                        {from.values.begin(), from.values.end()}});
    }
}

} // namespace

void PresetGenerate::transIndexMapList(const std::vector<TranslateMapping>& mappings,
                                       const ParameterMap& readWrite, const ParameterMap& readOnly,
                                       IndexMaps& indexMaps) {
    for (const auto& mapping : mappings) {
        if (mapping.indexMappings.empty())
            continue;
        const auto* const indexNames = findParameter(mapping.newName, readWrite, readOnly);
        if (indexNames == nullptr)
            return;
        auto templates = templatesOf(mapping, *indexNames);
        if (!templates)
            return;
        if (!templates->empty()) // what is there already stays
            indexMaps[std::string(mapping.newName)].merge(*templates);
    }
}

void PresetGenerate::addTranslation(const TranslateSection& section, const ParameterMap& readWrite,
                                    const ParameterMap& readOnly, TranslationTables& tables) {
    addNames(section, tables);
    transIndexMapList(section.mappings, readWrite, readOnly, tables.indexMaps);
}

} // namespace morvane
