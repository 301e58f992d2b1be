#include "support/definition_text.h"
#include "support/output_capture.h"
#include "tables/translation_tables.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

const ParameterMap readWrite{{"gain", {"channel", "band"}}, {"level", {"channel"}}, {"mode", {}}};
const ParameterMap readOnly{{"state", {"band"}}, {"twins", {"band", "band"}}};

/// The result of the translate sections of a preset definition file.
struct Tables {
    TranslationTables tables;
    std::string errors;
};

Tables tablesOf(std::string_view text) {
    Tables result;
    const auto definitions = test::presetDefinitionsOf(text);
    result.errors = test::standardErrorOf([&] {
        for (const auto& section : definitions.translateSections)
            PresetGenerate::addTranslation(section, readWrite, readOnly, result.tables);
    });
    return result;
}

// "name count: element element; " for each template.
std::string textOf(const IndexMaps& maps) {
    std::string text;
    for (const auto& [name, templates] : maps) {
        for (const auto& [count, elements] : templates) {
            text += name + " " + std::to_string(count) + ":";
            for (const auto& element : elements)
                text += " " + element;
            text += "; ";
        }
    }
    return text;
}

struct IndexRow {
    const char* why;
    const char* text; ///< of the preset definition file
    const char* maps;
    const char* errors;
};

constexpr const char* noErrors = "";

constexpr IndexRow indexRows[] = {
    {"no index mapping", "translate { gain { from { old } } removed { x } }", "", noErrors},
    {"elements in the order of the indices, not of the pairs",
     "translate { gain { index 1 { band = 0, channel = idx::0 } } }", "gain 1: idx::0 0; ",
     noErrors},
    {"a read-only parameter", "translate { state { index 0 { band = low } } }", "state 0: low; ",
     noErrors},
    {"several old counts",
     "translate { level { index 2 { channel = idx::1 } index 0 { channel = 1 } } }",
     "level 0: 1; level 2: idx::1; ", noErrors},
    {"the first template of a count stays",
     "translate { level { index 2 { channel = a } index 2 { channel = b } } }", "level 2: a; ",
     noErrors},
    {"also over several mappings of one parameter",
     "translate { level { index 2 { channel = a } } level { index 2 { channel = b } "
     "index 3 { channel = c } } }",
     "level 2: a; level 3: c; ", noErrors},
    {"also over several sections",
     "translate { level { index 2 { channel = a } } }\n"
     "translate { level { index 2 { channel = b } index 0 { channel = c } } }",
     "level 0: c; level 2: a; ", noErrors},
    {"pairs of indices that the parameter does not have are ignored",
     "translate { level { index 2 { row = x, channel = a, band = y } } }", "level 2: a; ",
     noErrors},
    {"the first pair of an index counts",
     "translate { twins { index 1 { band = idx::0, band = 5 } } }", "twins 1: idx::0 idx::0; ",
     noErrors},
    {"a parameter without indices gets no template",
     "translate { mode { index 1 { channel = a } } level { index 0 { channel = 1 } } }",
     "level 0: 1; ", noErrors},
    {"an unknown parameter ends the section",
     "translate { level { index 0 { channel = 1 } } gone { index 1 { a = b } } "
     "gain { index 1 { channel = 1, band = 2 } } }",
     "level 0: 1; ", "PresetGenerate::transIndexMapList() Error:Cannot locate parameter gone\n"},
    {"an unknown parameter first: no template at all",
     "translate { gone { index 1 { a = b } } level { index 0 { channel = 1 } } }", "",
     "PresetGenerate::transIndexMapList() Error:Cannot locate parameter gone\n"},
    {"an unknown parameter without index mappings is not looked up",
     "translate { gone { from { x } } level { index 0 { channel = 1 } } }", "level 0: 1; ",
     noErrors},
    {"an index that is missing ends the section, without the templates before it",
     "translate { state { index 0 { band = 1 } } "
     "gain { index 3 { channel = 1, band = 2 } index 1 { channel = 1 } } "
     "level { index 0 { channel = 1 } } }",
     "state 0: 1; ",
     "PresetGenerate::transIndexMapList() Error:Cannot locate parameter index band\n"},
    {"a later section goes on",
     "translate { gone { index 1 { a = b } } }\n"
     "translate { level { index 0 { channel = 1 } } }",
     "level 0: 1; ", "PresetGenerate::transIndexMapList() Error:Cannot locate parameter gone\n"},
};

TEST(TranslationTables, HoldTheIndexTemplates) {
    for (const auto& [why, text, maps, errors] : indexRows) {
        SCOPED_TRACE(why);
        const auto result = tablesOf(text);
        EXPECT_EQ(textOf(result.tables.indexMaps), maps);
        EXPECT_EQ(result.errors, errors);
    }
}

TEST(TranslationTables, HoldTheRemovedNamesOfAllSections) {
    const auto [tables, errors] =
        tablesOf("translate { removed { a, b } removed { c } gone { index 1 { a = b } } }\n"
                 "translate { removed { a, d } }");
    EXPECT_EQ(tables.removed, (std::set<std::string, std::less<>>{"a", "b", "c", "d"}));
}

TEST(TranslationTables, HoldTheFirstMappingOfEachOldName) {
    const auto [tables, errors] =
        tablesOf("translate { gain { from { volume { on = 1, off = 0, on = 2 } } from { loud } }\n"
                 "  mode { from { volume { on = auto } } } gone { index 1 { a = b } }\n"
                 "  level { from { height } } }\n"
                 "translate { mode { from { loud { x = y } } from { way } } }");
    using Mappings = decltype(tables.nameMappings);
    EXPECT_EQ(tables.nameMappings, (Mappings{{"volume", {"gain", {{"on", "1"}, {"off", "0"}}}},
                                             {"loud", {"gain", {}}},
                                             {"height", {"level", {}}},
                                             {"way", {"mode", {}}}}));
}

} // namespace
} // namespace morvane
