// The example definitions must be right, because users copy them.

#include "core/preset_manager.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "support/output_capture.h"
#include "support/preset_lines.h"
#include "text/line_reader.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace morvane {
namespace {

const SystemArguments fieldVariant{
    {"variant", "field"}, {"inputs", "4"}, {"outputs", "1"}, {"delay", "100"}, {"region", "eu"}};
const SystemArguments studioVariant{{"variant", "studio"}, {"inputs", "4"},
                                    {"outputs", "2"},      {"delay", "500"},
                                    {"region", "us"},      {"options", "genlock,hdr"}};

PresetManager manage(const SystemArguments& arguments) {
    const std::string folder = EXAMPLES_FOLDER;
    std::optional<PresetManager> manager;
    EXPECT_EQ(test::standardOutputOf([&] {
                  manager.emplace(folder + "/parameters.def", folder + "/presets.def", arguments);
              }),
              "");
    return *std::move(manager);
}

std::size_t sizeOf(const PresetManager& manager, std::string_view preset) {
    const auto* const keys = manager.findPreset(preset);
    return keys == nullptr ? 0 : keys->size();
}

struct SizeRow {
    const char* preset;
    std::size_t onField; ///< number of keys, 0 if there is no such preset
    std::size_t onStudio;
};

constexpr SizeRow sizeRows[] = {
    {"everything", 183, 249}, {"snapshot", 216, 288}, {"scene", 177, 232},
    {"panel", 8, 8},          {"input1", 40, 49},     {"tone", 36, 36},
    {"room", 68, 82},         {"meters", 8, 8},       {"streaming", 0, 8},
};

TEST(Examples, DefinePresetsForBothVariants) {
    const auto field = manage(fieldVariant);
    const auto studio = manage(studioVariant);
    for (const auto& [preset, onField, onStudio] : sizeRows) {
        EXPECT_EQ(sizeOf(field, preset), onField) << preset;
        EXPECT_EQ(sizeOf(studio, preset), onStudio) << preset;
    }
}

struct KeyRow {
    const char* preset;
    const char* key;
    bool onField;
    bool onStudio;
};

constexpr KeyRow keyRows[] = {
    {"scene", "inputGain[4]", true, true},
    {"scene", "outputGain[2]", false, true},
    {"scene", "sceneName", true, true},
    {"scene", "displayBrightness", false, false},
    {"scene", "hdrMode[1]", false, true},
    {"snapshot", "batteryLevel", true, false},
    {"snapshot", "fanSpeed", false, true},
    {"snapshot", "recallMemory[1]", false, false},
    {"input1", "matrixGain[1][1][left]", true, true},
    {"input1", "matrixGain[2][1][left]", false, false},
    {"input1", "inputFormat[1]", true, true},
    {"tone", "inputEqGain[4][high]", true, true},
    {"tone", "inputEqGain[4][air]", false, false},
    {"room", "matrixGain[2][1][right]", true, true},
    {"room", "matrixGain[2][2][right]", false, false},
    {"meters", "inputLevel[3][left]", true, true},
    {"meters", "inputLevel[3][right]", false, false},
    {"streaming", "streamTarget[2]", false, true},
};

TEST(Examples, CoverTheKeysThatTheirCommentsName) {
    const auto field = manage(fieldVariant);
    const auto studio = manage(studioVariant);
    for (const auto& [preset, key, onField, onStudio] : keyRows) {
        SCOPED_TRACE(std::string(preset) + " " + key);
        EXPECT_EQ(field.in_preset(key, preset), onField);
        EXPECT_EQ(studio.in_preset(key, preset), onStudio);
    }
}

TEST(Examples, TranslateTheOlderFile) {
    for (const auto& variant : {fieldVariant, studioVariant}) {
        const auto manager = manage(variant);
        const OwnedStream stream(std::fopen(EXAMPLES_FOLDER "/older.preset", "r"));
        std::string lines;
        const auto readAll = [&] {
            const int count = readPresetFile(stream.get(), [&](PresetEntry& entry) {
                if (translateEntry(manager.translation(), entry) &&
                    isOfKnownParameter(manager, entry))
                    lines += formatPresetLine(entry) + "\n";
            });
            EXPECT_EQ(count, 7);
        };
        EXPECT_EQ(test::standardErrorOf(readAll),
                  "PresetTranslate::translate() Error:Could not located index mapping for "
                  "matrixGain with 1 indices\n");
        EXPECT_EQ(lines, "videoAspect[1]=16:9\n"
                         "inputSource[2]=digital\n"
                         "matrixGain[1][1][left]=-6\n"
                         "outputLimiterThreshold[1]=-9\n"
                         "inputGain[1]=-12\n"
                         "=\n");
    }
}

} // namespace
} // namespace morvane
