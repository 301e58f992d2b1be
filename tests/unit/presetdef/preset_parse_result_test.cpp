#include "presetdef/preset_parse_result.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct ResultRow {
    PresetParseResult result;
    std::int32_t number;
    std::string_view name;
};

constexpr ResultRow resultRows[] = {
    {PresetParseResult::PARSE_PRESET_CONTINUE, -2, "PARSE_PRESET_CONTINUE"},
    {PresetParseResult::PARSE_PRESET_INTERNAL_ERR, -1, "PARSE_PRESET_INTERNAL_ERR"},
    {PresetParseResult::PARSE_PRESET_OK, 0, "PARSE_PRESET_OK"},
    {PresetParseResult::PARSE_PRESET_ACCESS_ERR, 1, "PARSE_PRESET_ACCESS_ERR"},
    {PresetParseResult::PARSE_PRESET_SYNTAX, 2, "PARSE_PRESET_SYNTAX"},
    {PresetParseResult::PARSE_PRESET_DUPLICATE_ENTRY, 3, "PARSE_PRESET_DUPLICATE_ENTRY"},
    {PresetParseResult::PARSE_PRESET_INVALID_INDEX, 4, "PARSE_PRESET_INVALID_INDEX"},
    {PresetParseResult::PARSE_PRESET_INVALID_RANGE, 5, "PARSE_PRESET_INVALID_RANGE"},
    {PresetParseResult::PARSE_PRESET_INC_EXC_ACCESS_ERR, 6, "PARSE_PRESET_INC_EXC_ACCESS_ERR"},
    {PresetParseResult::PARSE_PRESET_MISSING_IDENTIFIER, 7, "PARSE_PRESET_MISSING_IDENTIFIER"},
    {PresetParseResult::PARSE_PRESET_INVALID_IDENTIFIER, 8, "PARSE_PRESET_INVALID_IDENTIFIER"},
    {PresetParseResult::PARSE_PRESET_INVALID_INTEGER, 9, "PARSE_PRESET_INVALID_INTEGER"},
    {PresetParseResult::PARSE_PRESET_EMPTY_DEFINITION, 10, "PARSE_PRESET_EMPTY_DEFINITION"},
    {PresetParseResult::PARSE_PRESET_IO_ERROR, 11, "PARSE_PRESET_IO_ERROR"},
};

TEST(PresetParseResult, HasTheNumberAndTheNameOfEachOutcome) {
    for (const auto& [result, number, name] : resultRows) {
        EXPECT_EQ(static_cast<std::int32_t>(result), number);
        EXPECT_EQ(nameOf(result), name);
    }
}

} // namespace
} // namespace morvane
