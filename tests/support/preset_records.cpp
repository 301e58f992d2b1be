#include "support/preset_records.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

namespace morvane::test {

namespace {

template <typename Record>
void forgetLines(std::vector<Record>& records) {
    for (auto& record : records)
        record = withoutLines(std::move(record));
}

} // namespace

IndexValueSet nameSet(std::vector<std::string_view> names) {
    return {IndexValueSet::Kind::name, std::move(names), {}, {}};
}

IndexValueSet numberSet(std::vector<std::uint32_t> numbers) {
    return {IndexValueSet::Kind::number, {}, std::move(numbers), {}};
}

IndexValueSet rangeSet(std::vector<ValueRange> ranges) {
    return {IndexValueSet::Kind::range, {}, {}, std::move(ranges)};
}

IndexSelector plain(std::string_view indexName, IndexValueSet values) {
    return {indexName, false, std::move(values)};
}

IndexSelector negated(std::string_view indexName, IndexValueSet values) {
    return {indexName, true, std::move(values)};
}

IndexSpec clause(std::uint32_t line, std::vector<IndexSelector> selectors) {
    return {line, {}, false, std::move(selectors)};
}

IndexSpec noneClause(std::uint32_t line) {
    return {line, {}, true, {}};
}

PresetList includeList(std::uint32_t line, std::vector<IndexSpec> clauses,
                       std::vector<PresetItem> items, Everything all) {
    return {line,
            {},
            PresetList::Kind::include,
            PresetList::Access::ro,
            all == Everything::yes,
            std::move(clauses),
            std::move(items)};
}

PresetList excludeList(std::uint32_t line, std::vector<IndexSpec> clauses,
                       std::vector<PresetItem> items, Everything all) {
    return {line,
            {},
            PresetList::Kind::exclude,
            PresetList::Access::rw,
            all == Everything::yes,
            std::move(clauses),
            std::move(items)};
}

IndexValueSet withoutLines(IndexValueSet record) {
    return record;
}

IndexSpec withoutLines(IndexSpec record) {
    record.line = 0;
    return record;
}

PresetItem withoutLines(PresetItem record) {
    record.line = 0;
    forgetLines(record.indexSpecs);
    return record;
}

PresetList withoutLines(PresetList record) {
    record.line = 0;
    forgetLines(record.indexSpecs);
    forgetLines(record.items);
    return record;
}

PresetDefinition withoutLines(PresetDefinition record) {
    record.line = 0;
    forgetLines(record.includeLists);
    forgetLines(record.excludeLists);
    return record;
}

RemovedList withoutLines(RemovedList record) {
    record.line = 0;
    return record;
}

FromMapping withoutLines(FromMapping record) {
    record.line = 0;
    return record;
}

IndexMapping withoutLines(IndexMapping record) {
    record.line = 0;
    return record;
}

TranslateMapping withoutLines(TranslateMapping record) {
    record.line = 0;
    forgetLines(record.indexMappings);
    forgetLines(record.fromMappings);
    return record;
}

TranslateSection withoutLines(TranslateSection record) {
    record.line = 0;
    forgetLines(record.removedLists);
    forgetLines(record.mappings);
    return record;
}

PresetDefinitions withoutLines(PresetDefinitions record) {
    forgetLines(record.translateSections);
    forgetLines(record.presets);
    return record;
}

} // namespace morvane::test

namespace morvane {

using testing::PrintToString;

void PrintTo(PresetParseResult result, std::ostream* out) {
    *out << nameOf(result);
}

void PrintTo(const ValueRange& range, std::ostream* out) {
    *out << range.low << ".." << range.high;
}

void PrintTo(const IndexValueSet& set, std::ostream* out) {
    *out << "set of kind " << static_cast<std::uint32_t>(set.kind) << ", names "
         << PrintToString(set.names) << ", numbers " << PrintToString(set.numbers) << ", ranges "
         << PrintToString(set.ranges);
}

void PrintTo(const IndexSelector& selector, std::ostream* out) {
    *out << (selector.isNot ? "not " : "") << PrintToString(selector.indexName) << " "
         << PrintToString(selector.values);
}

void PrintTo(const IndexSpec& clause, std::ostream* out) {
    *out << clause.line << ": index " << (clause.none ? "none " : "")
         << PrintToString(clause.selectors);
}

void PrintTo(const PresetItem& item, std::ostream* out) {
    *out << item.line << ": item " << PrintToString(item.name) << " "
         << PrintToString(item.indexSpecs);
}

void PrintTo(const PresetList& list, std::ostream* out) {
    *out << list.line << ": " << (list.kind == PresetList::Kind::include ? "include" : "exclude")
         << (list.access == PresetList::Access::ro ? " ro " : " rw ") << (list.all ? "all " : "")
         << PrintToString(list.indexSpecs) << " " << PrintToString(list.items);
}

void PrintTo(const PresetDefinition& preset, std::ostream* out) {
    *out << preset.line << ": preset " << PrintToString(preset.name) << " "
         << PrintToString(preset.includeLists) << " " << PrintToString(preset.excludeLists);
}

void PrintTo(const RemovedList& list, std::ostream* out) {
    *out << list.line << ": removed " << PrintToString(list.names);
}

void PrintTo(const FromMapping& from, std::ostream* out) {
    *out << from.line << ": from " << PrintToString(from.oldName) << " "
         << PrintToString(from.values) << ", repeated " << PrintToString(from.repeatedValues);
}

void PrintTo(const IndexMapping& mapping, std::ostream* out) {
    *out << mapping.line << ": index " << mapping.count << " " << PrintToString(mapping.pairs);
}

void PrintTo(const TranslateMapping& mapping, std::ostream* out) {
    *out << mapping.line << ": mapping " << PrintToString(mapping.newName) << " "
         << PrintToString(mapping.indexMappings) << " " << PrintToString(mapping.fromMappings);
}

void PrintTo(const TranslateSection& section, std::ostream* out) {
    *out << section.line << ": translate " << PrintToString(section.removedLists) << " "
         << PrintToString(section.mappings);
}

void PrintTo(const PresetDefinitions& definitions, std::ostream* out) {
    *out << PrintToString(definitions.translateSections) << " "
         << PrintToString(definitions.presets);
}

} // namespace morvane
