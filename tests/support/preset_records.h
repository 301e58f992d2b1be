// Short ways to write the records of the preset definition file in a test, and to print them in a
// failed expectation.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"
#include "presetdef/translate_section.h"

#include <cstdint>
#include <iosfwd>
#include <string_view>
#include <vector>

namespace morvane::test {

// Value sets of one kind of elements.
IndexValueSet nameSet(std::vector<std::string_view> names);
IndexValueSet numberSet(std::vector<std::uint32_t> numbers);
IndexValueSet rangeSet(std::vector<ValueRange> ranges);

// Selectors with and without "not"; without values if no set is given.
IndexSelector plain(std::string_view indexName, IndexValueSet values = {});
IndexSelector negated(std::string_view indexName, IndexValueSet values = {});

// Index clauses.
IndexSpec clause(std::uint32_t line, std::vector<IndexSelector> selectors);
IndexSpec noneClause(std::uint32_t line);

enum class Everything {
    no,
    yes ///< the list holds "all"
};

// Lists of both kinds.
PresetList includeList(std::uint32_t line, std::vector<IndexSpec> clauses,
                       std::vector<PresetItem> items, Everything all = Everything::no);
PresetList excludeList(std::uint32_t line, std::vector<IndexSpec> clauses,
                       std::vector<PresetItem> items, Everything all = Everything::no);

// The same record with 0 for every line number.
IndexValueSet withoutLines(IndexValueSet record);
IndexSpec withoutLines(IndexSpec record);
PresetItem withoutLines(PresetItem record);
PresetList withoutLines(PresetList record);
PresetDefinition withoutLines(PresetDefinition record);
RemovedList withoutLines(RemovedList record);
FromMapping withoutLines(FromMapping record);
IndexMapping withoutLines(IndexMapping record);
TranslateMapping withoutLines(TranslateMapping record);
TranslateSection withoutLines(TranslateSection record);
PresetDefinitions withoutLines(PresetDefinitions record);

} // namespace morvane::test

// Where GoogleTest looks for them.
namespace morvane {

void PrintTo(PresetParseResult result, std::ostream* out);
void PrintTo(const ValueRange& range, std::ostream* out);
void PrintTo(const IndexValueSet& set, std::ostream* out);
void PrintTo(const IndexSelector& selector, std::ostream* out);
void PrintTo(const IndexSpec& clause, std::ostream* out);
void PrintTo(const PresetItem& item, std::ostream* out);
void PrintTo(const PresetList& list, std::ostream* out);
void PrintTo(const PresetDefinition& preset, std::ostream* out);
void PrintTo(const RemovedList& list, std::ostream* out);
void PrintTo(const FromMapping& from, std::ostream* out);
void PrintTo(const IndexMapping& mapping, std::ostream* out);
void PrintTo(const TranslateMapping& mapping, std::ostream* out);
void PrintTo(const TranslateSection& section, std::ostream* out);
void PrintTo(const PresetDefinitions& definitions, std::ostream* out);

} // namespace morvane
