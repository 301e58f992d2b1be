#include "support/definition_text.h"

#include "paramdef/param_def_parser.h"
#include "presetdef/preset_def_parser.h"
#include "support/layouts.h"
#include "support/preset_records.h"

#include <gtest/gtest.h>

namespace morvane::test {

SystemParameterTable parametersOf(std::string_view text) {
    SystemParameterTable table;
    ParamDefParser parser;
    std::uint32_t column = 0;
    std::uint32_t number = 0;
    for (const auto line : linesOf(table.text().keep(std::string(text)))) {
        const auto result = parser.parseParamDefLine(table, column, line, ++number);
        EXPECT_TRUE(result == ParamDefResult::ok) << line << " at column " << column;
    }
    return table;
}

PresetDefinitions presetDefinitionsOf(std::string_view text) {
    PresetDefinitions definitions;
    PresetDefParser parser;
    auto result = PresetParseResult::PARSE_PRESET_OK;
    std::uint32_t column = 0;
    std::uint32_t number = 0;
    for (const auto line : linesOf(definitions.text->keep(std::string(text))))
        result = parser.parsePresetDefLine(definitions, column, line, ++number);
    EXPECT_EQ(result, PresetParseResult::PARSE_PRESET_OK) << text << "\nat column " << column;
    return definitions;
}

} // namespace morvane::test
