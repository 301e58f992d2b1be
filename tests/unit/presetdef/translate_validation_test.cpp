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
                                           "level rw { index { input } }\n"
                                           "gain rw { index { input } index { output } }\n"
                                           "pair rw { index { input } index { input } }\n"
                                           "wide rw { index { input, output } }\n"
                                           "status rostrict { index { input } }\n"
                                           "reset wo { }\n";

struct SectionRow {
    const char* why;
    std::string_view text;
    PresetParseResult result;
    std::string_view output;
};

constexpr SectionRow sectionRows[] = {
    {"removed names that are gone", "translate { removed { a, b } removed { Level } }",
     PARSE_PRESET_OK, ""},
    {"a removed name that is still a parameter", "translate {\nremoved { a,\nlevel } }",
     PARSE_PRESET_SYNTAX,
     "Preset Definition Error on line 2.\n"
     "level - In translate removed list, but still a defined system parameter\n"},
    {"a removed name that is an index", "translate { removed { input } }", PARSE_PRESET_SYNTAX,
     "Preset Definition Error on line 1.\n"
     "input - In translate removed list, but still a defined system parameter\n"},
    {"a removed name that is still write-only", "translate { removed { reset } }",
     PARSE_PRESET_SYNTAX,
     "Preset Definition Error on line 1.\n"
     "reset - In translate removed list, but still a defined system parameter\n"},
    {"of several removed names the first counts",
     "translate { removed { a } removed\n{ b, mode, level } removed { input } }",
     PARSE_PRESET_SYNTAX,
     "Preset Definition Error on line 2.\n"
     "mode - In translate removed list, but still a defined system parameter\n"},
    {"removed lists come before mappings", "translate { nothing { from { x } }\nremoved { mode } }",
     PARSE_PRESET_SYNTAX,
     "Preset Definition Error on line 2.\n"
     "mode - In translate removed list, but still a defined system parameter\n"},

    {"mappings to parameters of every access type",
     "translate { mode { from { a } } status { from { b } } reset { from { c } }"
     " input { from { d } } }",
     PARSE_PRESET_OK, ""},
    {"a mapping to an unknown parameter",
     "translate {\nmode { from { x } }\nModes\n{ from { x } } }", PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 3.\n"
     "Modes - is an undefined system parameter\n"},
    {"an unknown parameter comes before its index mappings",
     "translate { nothing { index 1 { nowhere = x } } }", PARSE_PRESET_ACCESS_ERR,
     "Preset Definition Error on line 1.\n"
     "nothing - is an undefined system parameter\n"},
    {"mappings are checked in file order",
     "translate { level { index 1 { output = x } }\nnothing { from { x } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "output - is not an index for the parameter level\n"},

    {"every index once", "translate { level { index 1 { input = idx::0 } } }", PARSE_PRESET_OK, ""},
    {"every index once in any order",
     "translate { gain { index 1 { output = x, input = y } index 2 { input = x, output = y } } }",
     PARSE_PRESET_OK, ""},
    {"two dimensions of one index", "translate { pair { index 1 { input = x, input = y } } }",
     PARSE_PRESET_OK, ""},
    {"the first name of a dimension is its index", "translate { wide { index 1 { input = x } } }",
     PARSE_PRESET_OK, ""},
    {"a further name of a dimension is no index",
     "translate { wide { index 1 { input = x, output = y } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "output - is not an index for the parameter wide\n"},
    {"an index of another parameter",
     "translate {\nlevel {\nindex 1\n{ output = x,\ninput = y } } }", PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 3.\n"
     "output - is not an index for the parameter level\n"},
    {"a name that is no index at all", "translate { gain { index 1 { input = x, mode = y } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "mode - is not an index for the parameter gain\n"},
    {"an index of a parameter that has none", "translate { mode { index 1 { input = x } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "input - is not an index for the parameter mode\n"},
    {"an index twice", "translate { gain { index 1 { input = x, input = y, output = z } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "input - is not an index for the parameter gain\n"},
    {"an index three times for two dimensions",
     "translate { pair { index 1 { input = x, input = y, input = z } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "input - is not an index for the parameter pair\n"},
    {"a missing index", "translate {\ngain {\nindex 1 { input = x } } }",
     PARSE_PRESET_INVALID_RANGE,
     "Preset Definition Error on line 3.\n"
     "gain - Missing indices from translate index mapping\n"},
    {"one of two dimensions of one index", "translate { pair { index 1 { input = x } } }",
     PARSE_PRESET_INVALID_RANGE,
     "Preset Definition Error on line 1.\n"
     "pair - Missing indices from translate index mapping\n"},
    {"every index mapping must name them all",
     "translate { level { index 1 { input = x }\nindex 2 { output = x } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 2.\n"
     "output - is not an index for the parameter level\n"},
    {"of two mistakes in an index mapping the first counts",
     "translate { gain { index 1 { x = 1, y = 2 }\nindex 2 { input = x } } }",
     PARSE_PRESET_INVALID_INDEX,
     "Preset Definition Error on line 1.\n"
     "x - is not an index for the parameter gain\n"},

    {"from clauses are taken as written",
     "translate { mode { from { mode { mode = level } } from { input { a = b } } from { mode } } }",
     PARSE_PRESET_OK, ""},
};

TEST(TranslateValidation, ChecksRemovedListsThenMappings) {
    const auto parameters = test::parametersOf(parameterText);
    for (const auto& [why, text, result, output] : sectionRows) {
        SCOPED_TRACE(why);
        const auto definitions = test::presetDefinitionsOf(text);
        ASSERT_EQ(definitions.translateSections.size(), 1U);
        auto validated = PARSE_PRESET_INTERNAL_ERR;
        EXPECT_EQ(test::standardOutputOf([&] {
                      validated =
                          validateTranslateSection(definitions.translateSections[0], parameters);
                  }),
                  output);
        EXPECT_EQ(validated, result);
    }
}

} // namespace
} // namespace morvane
