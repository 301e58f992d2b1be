// Turns the definitions, which describe every variant of the device, into the tables of this one.
// Every condition is evaluated here, once, against the system arguments.
#pragma once

#include "engine/tables/index_table.h"
#include "engine/tables/key_set.h"
#include "engine/tables/parameter_map.h"
#include "engine/tables/translation_tables.h"
#include "paramdef/system_arguments.h"

#include <cstdint>
#include <string>
#include <vector>

namespace morvane {

class SystemParameterTable;
struct PresetDefinition;
struct TranslateMapping;
struct TranslateSection;

/// Which parameters a parameter map takes.
enum class AccessSelector : std::int32_t {
    readOnly = 0, ///< "ro" and "rostrict"
    writeOnly = 1,
    readWrite = 2,
};

struct PresetGenerate {
    /// The values of every index whose `ctrlValid` conditions hold: those of its `rangeValid`
    /// attributes whose condition holds, in file order.
    static IndexTable indexTable(const SystemParameterTable& parameters,
                                 const SystemArguments& arguments);

    /// The parameters of the selected access types whose `ctrlValid` conditions hold.
    static ParameterMap parameterMap(const SystemParameterTable& parameters,
                                     const SystemArguments& arguments, AccessSelector selector);

    /// The keys that a preset covers: every read-write parameter that it does not exclude and the
    /// read-only parameters that it includes. Takes time and memory in proportion to them.
    static KeySet keySet(const IndexTable& indices, const ParameterMap& readWrite,
                         const ParameterMap& readOnly, const PresetDefinition& preset);

    /// The keys of every instance of one parameter. None if an index has no value or is missing.
    static KeySet parameterKeys(const IndexTable& indices, const std::string& name,
                                const IndexNames& indexNames);

    /// Adds the index templates of a translate section. The first template of a parameter and a
    /// number of old indices stays.
    ///
    /// Ends at the first mapping whose parameter does not exist on this device, or that leaves one
    /// of its indices out, with a message on standard error. Mappings before it keep their
    /// templates; entries of its parameter and of those behind it keep their old indices.
    static void transIndexMapList(const std::vector<TranslateMapping>& mappings,
                                  const ParameterMap& readWrite, const ParameterMap& readOnly,
                                  IndexMaps& indexMaps);

    /// Adds everything that a translate section says. Of two mappings of one old name, the first
    /// stays.
    static void addTranslation(const TranslateSection& section, const ParameterMap& readWrite,
                               const ParameterMap& readOnly, TranslationTables& tables);
};

} // namespace morvane
