#include "paramdef/system_parameter.h"
#include "presetdef/validation.h"
#include "support/definition_text.h"
#include "support/output_capture.h"
#include "support/preset_records.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

using enum PresetParseResult;

constexpr std::string_view parameterText = "input index { rangeValid { 0..3 } }\n"
                                           "output index { rangeValid { 0..3 } }\n"
                                           "mode rw { }\n"
                                           "gain rw { index { input } }\n"
                                           "wide rw { index { input, output } }\n"
                                           "matrix rw { index { input } index { output } }\n"
                                           "version ro { }\n"
                                           "status rostrict { index { output } }\n"
                                           "reset wo { }\n";

struct DefinitionRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
    std::string_view output;
};

constexpr DefinitionRow definitionRows[] = {
    {"nothing", "", PARSE_PRESET_OK, ""},
    {"an empty preset", "a preset { }", PARSE_PRESET_OK, ""},
    {"everything that is allowed",
     "a preset { include ro { all } exclude rw { all } include ro { version, status,"
     " index { input {0..99}, not output }, index { none } } exclude rw { mode,"
     " gain { index { not input {x} } }, matrix { index { output } index { input, not output } },"
     " index { not input }, all } }",
     PARSE_PRESET_OK, ""},
    {"values are not checked", "a preset { exclude rw { gain { index { input {99, x, 7..8} } } } }",
     PARSE_PRESET_OK, ""},

    {"a list's clause with an unknown index", "a preset {\nexclude rw {\nindex\n{\nnowhere } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 4.\n"
     "nowhere - is an undefined system index\n"},
    {"a list's clause with a parameter that is no index",
     "a preset { include ro { index { version } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "version - is an undefined system index\n"},
    {"a list's clause: every selector is checked",
     "a preset { include ro { index { input, not output, not nowhere {1}, elsewhere } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "nowhere - is an undefined system index\n"},
    {"an index in capitals is another name", "a preset { include ro { index { INPUT } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "INPUT - is an undefined system index\n"},

    {"an unknown parameter", "a preset {\nexclude rw {\nmode,\nnothing\n} }",
     PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 4.\n"
     " nothing - is an undefined system parameter\n"},
    {"an unknown parameter to include", "a preset { include ro { nothing } }",
     PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " nothing - is an undefined system parameter\n"},
    {"a read-write parameter to include", "a preset { include ro {\nmode } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 2.\n"
     " mode - does not have the correct access type for its include/exclude list\n"},
    {"a write-only parameter to include", "a preset { include ro { reset } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " reset - does not have the correct access type for its include/exclude list\n"},
    {"an index to include", "a preset { include ro { input } }", PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " input - does not have the correct access type for its include/exclude list\n"},
    {"a read-only parameter to exclude", "a preset { exclude rw { version } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " version - does not have the correct access type for its include/exclude list\n"},
    {"a strictly read-only parameter to exclude", "a preset { exclude rw { status } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " status - does not have the correct access type for its include/exclude list\n"},
    {"a write-only parameter to exclude", "a preset { exclude rw { reset } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " reset - does not have the correct access type for its include/exclude list\n"},
    {"an index to exclude", "a preset { exclude rw { input } }", PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " input - does not have the correct access type for its include/exclude list\n"},

    {"a parameter's clause with an unknown index",
     "a preset { exclude rw { gain {\nindex\n{ input }\nindex { not nowhere } } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 4.\n"
     "nowhere - is an undefined system index\n"},
    {"a parameter's clause with a parameter that is no index",
     "a preset { exclude rw { gain { index { mode } } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "mode - is an undefined system index\n"},
    {"a parameter's clause with the index of another",
     "a preset { exclude rw { gain { index { input } index\n{ input,\noutput } } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 2.\n"
     "output - is not defined as an index for the parameter gain\n"},
    {"a parameter's clause with the absence of another's index",
     "a preset { include ro { status { index { not input } } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "input - is not defined as an index for the parameter status\n"},
    {"the first name of a dimension is its index",
     "a preset { exclude rw { wide { index { input } } } }", PARSE_PRESET_OK, ""},
    {"a further name of a dimension is no index",
     "a preset { exclude rw { wide { index { output } } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "output - is not defined as an index for the parameter wide\n"},
    {"\"none\" for a parameter with indices", "a preset { exclude rw { gain { index { none } } } }",
     PARSE_PRESET_OK, ""},

    {"of one parameter the name comes first",
     "a preset { include ro { nothing { index { nowhere } } } }", PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " nothing - is an undefined system parameter\n"},
    {"of one parameter the access type comes before the clauses",
     "a preset { include ro { mode { index { nowhere } } } }", PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " mode - does not have the correct access type for its include/exclude list\n"},
    {"of one list the clauses of its own come before its parameters",
     "a preset { include ro {\nnothing,\nindex { nowhere } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 3.\n"
     "nowhere - is an undefined system index\n"},
    {"of one list the parameters come in file order",
     "a preset { include ro { version, mode, nothing } }", PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " mode - does not have the correct access type for its include/exclude list\n"},
    {"a list's clauses come in file order",
     "a preset { include ro {\nindex { input },\nindex { b },\nindex { a } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 3.\n"
     "b - is an undefined system index\n"},
    {"include lists come before exclude lists",
     "a preset { exclude rw {\nnothing }\ninclude ro { version }\ninclude ro { mode } }",
     PARSE_PRESET_INC_EXC_ACCESS_ERR,
     "Preset Definition Error on line 4.\n"
     " mode - does not have the correct access type for its include/exclude list\n"},
    {"the parameters of one list come before the clauses of the next",
     "a preset { include ro {\nnothing }\ninclude ro { index { nowhere } } }",
     PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 2.\n"
     " nothing - is an undefined system parameter\n"},
    {"a list of \"all\" is checked too", "a preset { exclude rw { nothing, all } }",
     PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     " nothing - is an undefined system parameter\n"},
    {"presets come in file order",
     "b preset { }\nb preset { exclude rw { second } }\na preset { include ro { third } }",
     PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 2.\n"
     " second - is an undefined system parameter\n"},
    {"sections come before presets",
     "a preset { include ro { nothing } }\ntranslate { removed { x } }\n"
     "translate { removed { mode } }\n",
     PARSE_PRESET_SYNTAX,
     "Preset Definition Error on line 3.\n"
     "mode - In translate removed list, but still a defined system parameter\n"},
    {"sections come in file order, mappings of one before lists of the next",
     "translate {\nnothing { from { x } } }\ntranslate { removed { mode } }\n",
     PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 2.\n"
     "nothing - is an undefined system parameter\n"},
};

TEST(PresetValidation, ReportsTheFirstFailureOfTheSectionsAndThenOfThePresets) {
    const auto parameters = test::parametersOf(parameterText);
    for (const auto& [why, text, result, output] : definitionRows) {
        SCOPED_TRACE(why);
        const auto definitions = test::presetDefinitionsOf(text);
        auto validated = PARSE_PRESET_INTERNAL_ERR;
        EXPECT_EQ(test::standardOutputOf(
                      [&] { validated = validatePresetDefinitions(definitions, parameters); }),
                  output);
        EXPECT_EQ(validated, result);
    }
}

TEST(PresetValidation, HandsOutTheNameThatIsAtFault) {
    const auto definitions = test::presetDefinitionsOf("a preset {\ninclude ro { x } }");
    InvalidRecord invalid;
    EXPECT_EQ(validatePresetDefinitions(definitions, {}, invalid), PARSE_PRESET_ACCESS_ERR);
    EXPECT_EQ(invalid.line, 2U);
    EXPECT_EQ(invalid.name, "x");
    EXPECT_EQ(invalid.name.data(), definitions.presets[0].includeLists[0].items[0].name.data());
}

TEST(PresetValidation, WritesTheLineAndTheTextAndHandsTheResultBack) {
    const auto definitions =
        test::presetDefinitionsOf(std::string(4710, '\n') + "a preset { include ro { x } }");
    auto result = PARSE_PRESET_OK;
    EXPECT_EQ(test::standardOutputOf([&] { result = validatePresetDefinitions(definitions, {}); }),
              "Preset Definition Error on line 4711.\n x - is an undefined system parameter\n");
    EXPECT_EQ(result, PARSE_PRESET_ACCESS_ERR);
}

} // namespace
} // namespace morvane
