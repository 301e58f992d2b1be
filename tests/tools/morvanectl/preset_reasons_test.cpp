#include "preset_reasons.h"
#include "support/temp_folder.h"
#include "variant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {
namespace {

constexpr const char* parameters = R"(
input index { rangeValid { 1..3 } }
gain rw { index { input } }
pan rw { index { input } }
mode rw { }
level ro { index { input } }
clip ro { index { input } }
gone rw { ctrlValid (0) }
trigger wo { }
)";

constexpr const char* presets = R"(
scene preset {
    include ro { level { index { input { 1, 9 } } } }
    exclude rw {
        index { input { 3 } },
        gain { index { input { 1, 3 } }
               index { not input { 1 } } }
    }
}
snapshot preset {
    include ro { level { index { input { 3, 9 } } } }
    include ro { clip { index { input { 8 } } }, all }
    include ro { level { index { input { 7 } } } }
    exclude rw { all }
}
)";

class PresetReasonsTest : public testing::Test {
protected:
    PresetReasonsTest() {
        Settings settings;
        settings.paramDefFile = folder_.write("p", parameters);
        settings.presetDefFile = folder_.write("d", presets);
        variant_ = readVariant(settings);
    }

    /// What decides about a parameter, such as "out: [1] [2]; index clause on line 4".
    std::vector<std::string> reasons(std::size_t preset, const char* parameter) {
        PresetReasons all(variant_->definitions.presets.presets.at(preset), variant_->manager);
        all.of("pan"); // which has the indices of others, and no item of its own
        all.of("clip");
        std::vector<std::string> found;
        for (const auto& [areCovered, parts, endings] : all.of(parameter)) {
            found.emplace_back(areCovered ? "in:" : "out:");
            for (const auto& ending : endings)
                found.back() += " " + ending;
            for (const auto part : parts)
                found.back() += "; " + all.parts().at(part).text;
        }
        return found;
    }

    const test::TempFolder folder_;
    std::optional<Variant> variant_;
};

using testing::ElementsAre;

TEST_F(PresetReasonsTest, TellsWhichPartsTakeKeysAway) {
    EXPECT_THAT(reasons(0, "gain"),
                ElementsAre("out: [1]; item gain, index clause on line 6",
                            "out: [2]; item gain, index clause on line 7",
                            "out: [3]; index clause; item gain, index clause on line 6; "
                            "item gain, index clause on line 7"));
    EXPECT_THAT(reasons(0, "pan"), ElementsAre("in: [1] [2]", "out: [3]; index clause"));
    EXPECT_THAT(reasons(0, "mode"), ElementsAre("in: "));
}

TEST_F(PresetReasonsTest, TellsWhichPartsAddKeys) {
    EXPECT_THAT(reasons(0, "level"),
                ElementsAre("in: [1] [9]; item level, index clause on line 3", "out: [2] [3]"));
    EXPECT_THAT(reasons(0, "clip"), ElementsAre("out: [1] [2] [3]"));
}

TEST_F(PresetReasonsTest, CountsWhatStandsBeforeAListThatIncludesAll) {
    EXPECT_THAT(reasons(1, "level"),
                ElementsAre("in: [1] [2]; all", "in: [3]; item level, index clause on line 11; all",
                            "in: [9]; item level, index clause on line 11"));
    EXPECT_THAT(reasons(1, "clip"), ElementsAre("in: [1] [2] [3]; all"));
    EXPECT_THAT(reasons(1, "gain"), ElementsAre("out: [1] [2] [3]; all"));
}

TEST_F(PresetReasonsTest, HasNothingOfAParameterThatDoesNotExist) {
    for (const auto* const name : {"gone", "trigger", "input", "nowhere"})
        EXPECT_THAT(reasons(0, name), ElementsAre()) << name;
}

// Keys of each parameter that nothing takes away, or something adds, are those of the preset.
TEST_F(PresetReasonsTest, AgreesWithTheKeysOfThePreset) {
    for (const auto& preset : variant_->definitions.presets.presets) {
        PresetReasons all(preset, variant_->manager);
        const auto* const keys = variant_->manager.findPreset(preset.name);
        ASSERT_NE(keys, nullptr);
        std::size_t count = 0;
        for (const auto& [name, parameter] : variant_->definitions.parameters) {
            for (const auto& [areCovered, parts, endings] : all.of(name)) {
                EXPECT_EQ(areCovered, variant_->manager.isReadOnly(name) != parts.empty()) << name;
                for (const auto& ending : endings)
                    EXPECT_EQ(keys->contains(std::string(name) + ending), areCovered) << ending;
                count += areCovered ? endings.size() : 0;
            }
        }
        EXPECT_EQ(count, keys->size());
    }
}

} // namespace
} // namespace morvane::ctl
