#include "core/definitions.h"
#include "core/preset_manager.h"
#include "support/output_capture.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>

namespace morvane {
namespace {

constexpr std::string_view parameterText = "input index { rangeValid { 1..(inputs) } }\n"
                                           "gain rw { index { input } index { input } }\n"
                                           "mode rw { ctrlValid (gain == 7) }\n"
                                           "level rw { ctrlValid (model == 2) }\n"
                                           "version ro { }\n"
                                           "status rostrict { index { input } }\n"
                                           "reset wo { }\n";

constexpr std::string_view presetText =
    "scene preset { exclude rw { level } include ro { version } }\n"
    "nothing preset { exclude rw { all } }\n"
    "states preset { exclude rw { all } include ro { status { index { input {2, 9} } } } }\n"
    "big preset { exclude rw { gain, mode } }\n"
    "twice preset { exclude rw { all } include ro { version } }\n"
    "twice preset { include ro { all } }\n"
    "late preset { exclude rw { all } }\n"
    "late preset { exclude rw { gain } }\n";

/// A manager and what its construction wrote to standard output.
struct Built {
    std::optional<PresetManager> manager;
    std::string output;
};

Built build(const std::string& paramDefPath, const std::string& presetDefPath,
            const SystemArguments& arguments) {
    Built built;
    built.output = test::standardOutputOf(
        [&] { built.manager.emplace(paramDefPath, presetDefPath, arguments); });
    return built;
}

Built buildFrom(std::string_view parameters, std::string_view presets,
                const SystemArguments& arguments) {
    const test::TempFolder folder;
    return build(folder.write("parameters", parameters), folder.write("presets", presets),
                 arguments);
}

// The keys of a preset in order, "unknown" if there is no such preset.
std::string keysOf(const PresetManager& manager, std::string_view presetName) {
    const auto* const keys = manager.findPreset(presetName);
    if (keys == nullptr)
        return "unknown";
    std::string text;
    for (const auto& key : keys->strings())
        text += (text.empty() ? "" : " ") + key;
    return text;
}

struct PresetRow {
    const char* name;
    const char* onSmallDevice; ///< keys
    const char* onBigDevice;
};

constexpr PresetRow presetRows[] = {
    {"scene", "gain[1][1] mode version",
     "gain[1][1] gain[1][2] gain[2][1] gain[2][2] mode version"},
    {"nothing", "unknown", "unknown"},
    {"states", "status[2] status[9]", "status[2] status[9]"},
    {"big", "unknown", "level"},
    {"twice", "version", "version"},
    {"late", "mode", "level mode"},
    {"", "unknown", "unknown"},
    {"Scene", "unknown", "unknown"},
    {"scen", "unknown", "unknown"},
    {"scene ", "unknown", "unknown"},
    {"gain", "unknown", "unknown"},
};

TEST(PresetManager, KnowsThePresetsThatCoverKeysOnThisDevice) {
    const auto small = buildFrom(parameterText, presetText, {{"inputs", "1"}, {"model", "1"}});
    const auto big = buildFrom(parameterText, presetText, {{"inputs", "2"}, {"model", "2"}});
    EXPECT_EQ(small.output, "");
    EXPECT_EQ(big.output, "");
    for (const auto& [name, onSmallDevice, onBigDevice] : presetRows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(keysOf(*small.manager, name), onSmallDevice);
        EXPECT_EQ(small.manager->is_preset(name), onSmallDevice != std::string_view("unknown"));
        EXPECT_EQ(keysOf(*big.manager, name), onBigDevice);
        EXPECT_EQ(big.manager->is_preset(name), onBigDevice != std::string_view("unknown"));
    }
}

struct KeyRow {
    const char* why;
    const char* key;
    const char* preset;
    bool isIn;
};

constexpr KeyRow keyRows[] = {
    {"a parameter without index", "mode", "scene", true},
    {"a parameter instance", "gain[1][2]", "scene", true},
    {"a read-only parameter", "version", "scene", true},
    {"an indexed parameter without its indices", "gain", "scene", false},
    {"a key with an index too few", "gain[1]", "scene", false},
    {"a key with an index too many", "gain[1][2][1]", "scene", false},
    {"an index value that does not exist", "gain[1][3]", "scene", false},
    {"a blank in the key", "gain[1] [2]", "scene", false},
    {"an index that is written differently", "gain[01][2]", "scene", false},
    {"an index of a parameter that has none", "mode[1]", "scene", false},
    {"a key in capitals", "Mode", "scene", false},
    {"no key", "", "scene", false},
    {"a parameter that is excluded", "level", "scene", false},
    {"a read-only parameter that is not included", "status[1]", "scene", false},
    {"a write-only parameter", "reset", "scene", false},
    {"an index", "input", "scene", false},
    {"an index value that only the preset names", "status[9]", "states", true},
    {"a key of another preset", "mode", "states", false},
    {"an unknown preset", "mode", "unknown", false},
    {"a preset without keys", "mode", "nothing", false},
    {"a preset without name", "mode", "", false},
};

TEST(PresetManager, FindsExactlyTheKeysOfAPreset) {
    const auto built = buildFrom(parameterText, presetText, {{"inputs", "2"}, {"model", "2"}});
    for (const auto& [why, key, preset, isIn] : keyRows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(built.manager->in_preset(key, preset), isIn);
    }
}

struct ParameterRow {
    const char* name;
    bool isParameter;
    bool isReadOnly;
};

constexpr ParameterRow parameterRows[] = {
    {"gain", true, false},   {"mode", true, false},     {"version", true, true},
    {"status", true, true},  {"level", false, false},   {"reset", false, false},
    {"input", false, false}, {"gain[1]", false, false}, {"", false, false},
};

TEST(PresetManager, KnowsTheParametersOfThisDevice) {
    const auto built = buildFrom(parameterText, presetText, {{"inputs", "2"}, {"model", "1"}});
    for (const auto& [name, isParameter, isReadOnly] : parameterRows) {
        EXPECT_EQ(built.manager->isParameter(name), isParameter) << name;
        EXPECT_EQ(built.manager->isReadOnly(name), isReadOnly) << name;
    }
}

TEST(PresetManager, TakesTheTranslationFromAllSections) {
    const auto built = buildFrom(parameterText,
                                 "translate { removed { a } mode { from { way } } }\n"
                                 "scene preset { }\n"
                                 "translate { removed { b } status { index 0 { input = 1 } } }\n",
                                 {{"inputs", "2"}, {"model", "1"}});
    const auto& translation = built.manager->translation();
    EXPECT_EQ(translation.removed, (std::set<std::string, std::less<>>{"a", "b"}));
    EXPECT_EQ(translation.nameMappings.at("way").newName, "mode");
    EXPECT_EQ(translation.indexMaps.at("status"), (IndexTemplateMap{{0, {"1"}}}));
}

// Every text of the tables.
std::string textsOf(const PresetManager& manager) {
    std::string texts;
    const auto add = [&texts](std::string_view text) { texts.append(text).append(" "); };
    for (const auto& [name, values] : manager.indices()) {
        add(name);
        std::for_each(values.begin(), values.end(), add);
    }
    for (const auto* const map : {&manager.readOnly(), &manager.readWrite()}) {
        for (std::size_t i = 0; i < map->size(); ++i) {
            add(map->name(i));
            std::for_each(map->indexNames(i).begin(), map->indexNames(i).end(), add);
        }
    }
    const auto& [removed, nameMappings, indexMaps] = manager.translation();
    std::for_each(removed.begin(), removed.end(), add);
    for (const auto& [oldName, mapping] : nameMappings) {
        add(oldName);
        add(mapping.newName);
        for (const auto& [oldValue, newValue] : mapping.values) {
            add(oldValue);
            add(newValue);
        }
    }
    for (const auto& [name, templates] : indexMaps) {
        add(name);
        for (const auto& [count, elements] : templates)
            std::for_each(elements.begin(), elements.end(), add);
    }
    for (const auto& [name, keys] : manager.presets()) {
        add(name);
        std::for_each(keys.begin(), keys.end(), [&](CStringView key) { add(key.view()); });
    }
    return texts;
}

// Nothing in the tables is borrowed from the definitions. AddressSanitizer finds what is.
TEST(PresetManager, OutlivesItsDefinitions) {
    const test::TempFolder folder;
    auto definitions = readDefinitions(
        folder.write("parameters", "a_long_name_of_an_index index { rangeValid { 1..2,\n"
                                   " \"a long text of one value,\n in two lines\" } }\n"
                                   "a_long_name_of_a_parameter rw { index {\n"
                                   " a_long_name_of_an_index } }\n"
                                   "another_long_name_of_a_parameter ro { }\n"),
        folder.write(
            "presets",
            "a_long_name_of_a_preset preset { include ro { all } }\n"
            "another_long_name_of_a_preset preset { exclude rw {\n"
            " index { a_long_name_of_an_index { a_long_name_of_a_value } } } }\n"
            "translate { removed { a_long_name_that_was_removed }\n"
            " a_long_name_of_a_parameter {\n"
            "  from { an_old_name_of_a_parameter { \"an old value of it\" = \"a new value\" } }\n"
            "  index 1 { a_long_name_of_an_index = a_long_text_of_a_new_index } } }\n"));
    ASSERT_TRUE(definitions);
    const PresetManager manager(*definitions, {});
    const auto before = textsOf(manager);
    definitions.reset();
    EXPECT_EQ(textsOf(manager), before);
    EXPECT_TRUE(
        manager.in_preset("a_long_name_of_a_parameter[a long text of one value,in two lines]",
                          "a_long_name_of_a_preset"));
    EXPECT_TRUE(manager.isReadOnly("another_long_name_of_a_parameter"));
}

TEST(PresetManager, AcceptsAParameterFileThatEndsInsideABlock) {
    const auto built = buildFrom("mode rw { }\nlevel rw {\n", "scene preset { }\n", {});
    EXPECT_EQ(built.output, "");
    EXPECT_EQ(keysOf(*built.manager, "scene"), "level mode");
}

TEST(PresetManager, AcceptsAPresetFileWithoutPresets) {
    const auto built = buildFrom(parameterText, "# none\ntranslate { removed { old } }\n", {});
    EXPECT_EQ(built.output, "");
    EXPECT_FALSE(built.manager->is_preset("scene"));
}

void expectNoPreset(const PresetManager& manager) {
    for (const auto& [name, onSmallDevice, onBigDevice] : presetRows) {
        EXPECT_FALSE(manager.is_preset(name)) << name;
        EXPECT_EQ(keysOf(manager, name), "unknown") << name;
    }
    for (const auto& [why, key, preset, isIn] : keyRows)
        EXPECT_FALSE(manager.in_preset(key, preset)) << why;
}

struct RefusedRow {
    const char* why;
    std::string parameters;
    std::string presets;
    const char* output;
};

const RefusedRow refusedRows[] = {
    {"an empty parameter file", "", "scene preset { foo\n", ""},
    {"a mistake in the parameter file", "mode rw { }\nlevel wr { }\n", "scene preset { foo\n",
     "Error on line 2\nInvalid parameter access type\nlevel wr { }\n      ^\n"},
    {"an empty preset file", std::string(parameterText), "", ""},
    {"a preset file that ends inside a block", std::string(parameterText),
     "scene preset { }\nbig preset {\n", ""},
    {"a mistake after a complete preset", std::string(parameterText),
     "scene preset { }\nbig preset { foo }\n",
     "PARSE_PRESET_SYNTAX Error on line 2\nbig preset { foo }\n             ^\n"},
    {"a preset with an unknown parameter", std::string(parameterText),
     "scene preset { }\nbig preset { exclude rw { foo } }\n",
     "Preset Definition Error on line 2.\n foo - is an undefined system parameter\n"},
    {"a translate section with an unknown parameter", std::string(parameterText),
     "scene preset { }\ntranslate { foo { from { mode } } }\n",
     "Preset Definition Error on line 2.\nfoo - is an undefined system parameter\n"},
};

TEST(PresetManager, KnowsNothingWhenAFileIsWrong) {
    for (const auto& [why, parameters, presets, output] : refusedRows) {
        SCOPED_TRACE(why);
        const auto built = buildFrom(parameters, presets, {{"inputs", "2"}, {"model", "2"}});
        EXPECT_EQ(built.output, output);
        expectNoPreset(*built.manager);
    }
}

TEST(PresetManager, KnowsNothingWhenAFileIsMissing) {
    const test::TempFolder folder;
    const auto parameters = folder.write("parameters", parameterText);
    const auto presets = folder.write("presets", presetText);
    const auto missing = folder.path("missing");

    const auto withoutParameters = build(missing, presets, {{"inputs", "2"}, {"model", "2"}});
    EXPECT_EQ(withoutParameters.output, "Can't open file\n");
    expectNoPreset(*withoutParameters.manager);

    const auto withoutPresets = build(parameters, missing, {{"inputs", "2"}, {"model", "2"}});
    EXPECT_EQ(withoutPresets.output, "");
    expectNoPreset(*withoutPresets.manager);
}

} // namespace
} // namespace morvane
