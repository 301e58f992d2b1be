#include "page_data.h"
#include "support/temp_folder.h"
#include "variant.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace morvane::ctl {
namespace {

/// The definitions and all named variants of a folder.
class Device {
public:
    explicit Device(const std::string& folder) {
        Settings settings;
        settings.paramDefFile = folder + "/parameters.def";
        settings.presetDefFile = folder + "/presets.def";
        settings.allVariants = true;
        device_ = readDevice(settings);
        matrix_ = coverageMatrix(device_->definitions, device_->variants, {});
        shown_.resize(matrix_.parameters.size());
        std::iota(shown_.begin(), shown_.end(), std::size_t{0});
        data_ = pageData(device_->definitions, matrix_, shown_);
    }

    const DescribedDevice& described() const { return *device_; }
    const CoverageMatrix& matrix() const { return matrix_; }
    const Json& data() const { return data_; }

    /// What the page shows in a cell; null if the preset or the parameter is not there.
    Json cell(std::size_t preset, std::size_t parameter, std::size_t variant) const {
        const auto& on = data_["presets"][preset]["on"][variant];
        const auto& group = data_["parameters"][parameter]["groups"][variant];
        if (on.is_null() || group.is_null())
            return {};
        const std::map<std::size_t, std::size_t> items = on["items"];
        const std::map<std::size_t, std::size_t> groups = on["groups"];
        const auto item = items.find(parameter);
        return data_["decisions"].at(item == items.end() ? groups.at(group.get<std::size_t>())
                                                         : item->second);
    }

private:
    std::optional<DescribedDevice> device_;
    CoverageMatrix matrix_;
    std::vector<std::size_t> shown_;
    Json data_;
};

constexpr const char* parameters = R"(input index { rangeValid { 1..(inputs) } }
gain rw { index { input } }
label rw { index { input } ctrlRO (gain == 1) }
level ro { index { input } }
mode rw { ctrlValid (inputs > 1) rangeValid (inputs == 2) { 1 } rangeValid { 0 } }
)";
constexpr const char* presets = R"(sound preset {
    include ro { level { index { input { 2 } } } }
    exclude rw { label }
}
status preset { include ro { all } exclude rw { all } }
both preset { exclude rw { index { not input }, index { not input { 2 } }, mode } }
)";

class PageDataTest : public testing::Test {
protected:
    static std::string written(const test::TempFolder& folder) {
        folder.write("parameters.def", parameters);
        folder.write("presets.def", presets);
        folder.write("variants", "one: inputs=1\ntwo: inputs=2\n");
        return folder.path("");
    }

    const test::TempFolder folder_;
    const Device device_{written(folder_)};
};

TEST_F(PageDataTest, DescribesTheVariants) {
    EXPECT_EQ(device_.data()["variants"], Json::parse(R"([
        {"name": "one", "arguments": ["inputs=1"]}, {"name": "two", "arguments": ["inputs=2"]}])"));
}

// The presets are both, sound and status.
TEST_F(PageDataTest, DescribesTheParameters) {
    EXPECT_EQ(device_.data()["parameters"], Json::parse(R"([
        {"name": "gain", "access": "rw", "blocks": [{"line": 2, "text":
           "gain rw { index { input } }"}],
         "indices": [0], "keys": [1, 2],
         "groups": [1, 1], "conditions": [], "differing": [0, 1]},
        {"name": "label", "access": "rw", "blocks": [{"line": 3, "text":
           "label rw { index { input } ctrlRO (gain == 1) }"}],
         "indices": [0], "keys": [1, 2],
         "groups": [1, 1], "conditions": [{"line": 3, "outcomes": [0, 0]}], "differing": [0]},
        {"name": "level", "access": "ro", "blocks": [{"line": 4, "text":
           "level ro { index { input } }"}],
         "indices": [0], "keys": [1, 2],
         "groups": [0, 0], "conditions": [], "differing": [1, 2]},
        {"name": "mode", "access": "rw", "blocks": [{"line": 5, "text":
           "mode rw { ctrlValid (inputs > 1) rangeValid (inputs == 2) { 1 } rangeValid { 0 } }"}],
         "indices": [], "keys": [null, 1],
         "groups": [null, 2],
         "conditions": [{"line": 5, "outcomes": [1, 2]}, {"line": 5, "outcomes": [3, 4]}],
         "differing": [1]}])"));
    EXPECT_EQ(device_.data()["texts"], Json::parse(R"json([
        "ctrlRO (gain == 1) counts as met (gain is a parameter, whose value is not known yet)",
        "ctrlValid (inputs > 1) does not hold (inputs is 1)",
        "ctrlValid (inputs > 1) holds (inputs is 2)",
        "rangeValid (inputs == 2) does not hold (inputs is 1)",
        "rangeValid (inputs == 2) holds (inputs is 2)"])json"));
}

TEST_F(PageDataTest, DescribesTheIndices) {
    EXPECT_EQ(device_.data()["indices"], Json::parse(R"([
        {"name": "input", "blocks": [{"line": 1, "text": "input index { rangeValid { 1..(inputs) } }"}],
         "values": ["1", "1, 2"], "conditions": []}])"));
}

// An index that nobody defines and one that does not exist: no key, but something to show.
TEST(PageData, DescribesIndicesThatAreNotThere) {
    const test::TempFolder folder;
    folder.write("parameters.def", "bus index { ctrlValid (inputs > 4) rangeValid { 1 } }\n"
                                   "gain rw { index { bus } index { nothing } }\nmode rw { }\n");
    folder.write("presets.def", "sound preset { }\n");
    folder.write("variants", "one: inputs=1\n");
    EXPECT_EQ(Device(folder.path("")).data()["indices"], Json::parse(R"([
        {"name": "bus", "blocks": [{"line": 1,
           "text": "bus index { ctrlValid (inputs > 4) rangeValid { 1 } }"}],
         "values": [null], "conditions": [{"line": 1, "outcomes": [0]}]},
        {"name": "nothing", "blocks": [], "values": [null], "conditions": []}])"));
}

TEST_F(PageDataTest, GivesReasonsForEveryKey) {
    EXPECT_EQ(device_.data()["presets"][1]["on"][1]["parts"], Json::parse(R"([
        {"line": 2, "text": "added by the include list: item level, index clause on line 2"},
        {"line": 3, "text": "taken away by the exclude list: item label"}])"));
    constexpr std::size_t sound = 1;
    EXPECT_EQ(device_.cell(sound, 0, 1), Json::parse(R"(
        {"own": 2, "unknown": 0, "keys": [["in", [], ["[1]", "[2]"]]]})"));
    EXPECT_EQ(device_.cell(sound, 1, 1), Json::parse(R"(
        {"own": 0, "unknown": 0, "keys": [["out", [1], ["[1]", "[2]"]]]})"));
    EXPECT_EQ(device_.cell(sound, 2, 0), Json::parse(R"(
        {"own": 0, "unknown": 1, "keys": [["out", [], ["[1]"]], ["unknown", [0], ["[2]"]]]})"));
    EXPECT_EQ(device_.cell(sound, 2, 1), Json::parse(R"(
        {"own": 1, "unknown": 0, "keys": [["out", [], ["[1]"]], ["in", [0], ["[2]"]]]})"));
    EXPECT_EQ(device_.cell(sound, 3, 0), Json());
}

TEST_F(PageDataTest, HasNothingOfAPresetThatCoversNoKey) {
    EXPECT_EQ(device_.data()["presets"][0]["name"], "both");
    EXPECT_EQ(device_.data()["presets"][0]["on"][0], Json());
    EXPECT_EQ(device_.cell(0, 0, 1), Json::parse(R"(
        {"own": 1, "unknown": 0, "keys": [["out", [1], ["[1]"]], ["in", [], ["[2]"]]]})"));
}

// Of presets with one name the first that covers a key is used.
TEST(PageData, GivesTheReasonsOfThePresetThatIsUsed) {
    const test::TempFolder folder;
    folder.write("parameters.def", "mode rw { }\n");
    folder.write("presets.def", "sound preset { exclude rw { all } }\nsound preset { }\n");
    folder.write("variants", "one:\n");
    EXPECT_EQ(Device(folder.path("")).data()["presets"][0]["on"][0]["line"], 2);
}

// Says of each key of a cell whether it is covered, and compares that with the preset.
// @return the number of keys that are covered.
std::size_t checkCell(const Json& cell, const std::string& parameter, bool isReadOnly,
                      const KeySet& preset) {
    std::size_t count = 0;
    for (const auto& entry : cell["keys"]) {
        const bool areCovered = entry[0] != "out";
        EXPECT_EQ(areCovered, isReadOnly != entry[1].empty()) << parameter << entry;
        for (const auto& ending : entry[2])
            EXPECT_EQ(preset.contains(parameter + ending.get<std::string>()), areCovered)
                << parameter << ending;
        count += areCovered ? entry[2].size() : 0;
    }
    return count;
}

TEST(PageData, AgreesWithTheKeysAndTheMatrixOfTheExamples) {
    const Device device(EXAMPLES_FOLDER);
    ASSERT_EQ(device.matrix().variants.size(), 4U);
    for (std::size_t variant = 0; variant < 4; ++variant) {
        const PresetManager manager(device.described().definitions,
                                    device.matrix().variants[variant].arguments);
        std::size_t number = 0;
        for (const auto& [name, column] : device.matrix().presets) {
            std::size_t count = 0;
            for (std::size_t i = 0; i < device.matrix().parameters.size(); ++i) {
                const auto cell = device.cell(number, i, variant);
                if (cell.is_null())
                    continue;
                const std::string parameter(device.matrix().parameters[i].definition->name);
                EXPECT_EQ(cell["own"], column.covered(i, variant).own) << parameter;
                EXPECT_EQ(cell["unknown"], column.covered(i, variant).unknown) << parameter;
                count += checkCell(cell, parameter, manager.isReadOnly(parameter),
                                   *manager.findPreset(name));
            }
            const auto* const keys = manager.findPreset(name);
            EXPECT_EQ(count, keys == nullptr ? 0 : keys->size()) << name;
            ++number;
        }
    }
}

} // namespace
} // namespace morvane::ctl
