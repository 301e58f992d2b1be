// What is stored and loaded again is what it was, on devices and with presets of many shapes.

#include "core/preset_manager.h"
#include "engine/load_preset.h"
#include "engine/parameter_operations.h"
#include "engine/preset_entry.h"
#include "engine/store_preset.h"
#include "support/definition_text.h"
#include "support/log_recorder.h"
#include "support/preset_lines.h"
#include "support/received_strings.h"
#include "support/temp_folder.h"
#include "value_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace morvane {
namespace {

constexpr unsigned shapes = 300;

/// Generates definitions and values; the same ones for the same seed, on every machine.
class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    /// Generates a device: fills the members below.
    void makeDevice() {
        for (unsigned i = below(4); i > 0; --i)
            makeIndex();
        for (unsigned i = 1 + below(8); i > 0; --i)
            makeParameter();
    }

    /// A preset block for the device.
    std::string makePreset(const std::string& name) {
        std::string text = name + " preset {";
        for (unsigned i = below(3); i > 0; --i)
            text += " include ro " + list("ro");
        for (unsigned i = below(3); i > 0; --i)
            text += " exclude rw " + list("rw");
        return text + " }\n";
    }

    /// A value that a file can hold: no line feed, and no trailing white space but blanks.
    std::string makeValue() {
        constexpr std::string_view characters[] = {
            "a", "7", "=", "[", "]", " ", "#", "\"", "\t", "\xc3\xa4", "\xe2\x82\xac", "\\"};
        std::string value;
        for (unsigned i = below(12); i > 0; --i)
            value += characters[below(std::size(characters))];
        return value + (below(4) == 0 ? " " : "x");
    }

    unsigned below(std::size_t count) { return static_cast<unsigned>(random_() % count); }

    std::string parameterText;
    std::map<std::string, std::vector<std::string>> indices; ///< their values

private:
    struct Parameter {
        std::string name;
        std::string access;
        std::vector<std::string> indexNames;
    };

    void makeIndex() {
        const auto name = "i" + std::to_string(indices.size());
        auto& values = indices[name];
        for (unsigned i = below(5); i > 0; --i)
            values.push_back(below(2) == 0 ? std::to_string(values.size())
                                           : "v" + std::to_string(values.size()));
        std::string items;
        for (const auto& value : values)
            items += (value.front() == 'v' ? '"' + value + '"' : value) + ", ";
        parameterText += name + " index { rangeValid { " + items + "} }\n";
    }

    void makeParameter() {
        constexpr const char* accessWords[] = {"rw", "rw", "rw", "ro", "rostrict", "wo"};
        Parameter parameter{"p" + std::to_string(parameters_.size()),
                            accessWords[below(std::size(accessWords))],
                            {}};
        parameterText += parameter.name + " " + parameter.access + " {";
        for (unsigned i = indices.empty() ? 0 : below(4); i > 0; --i) {
            parameter.indexNames.push_back(anyIndex());
            parameterText += " index { " + parameter.indexNames.back() + " }";
        }
        parameterText += " default { \"d" + std::to_string(parameters_.size()) + "\" } }\n";
        parameters_.push_back(parameter);
    }

    const std::string& anyIndex() {
        auto index = indices.begin();
        std::advance(index, below(indices.size()));
        return index->first;
    }

    std::string list(const std::string& access) {
        std::string text;
        for (const auto& parameter : parameters_) {
            if (!parameter.access.starts_with(access) || below(3) != 0)
                continue;
            text += (text.empty() ? "{ " : ", ") + parameter.name;
            if (!parameter.indexNames.empty() && below(2) == 0)
                text += " { index { " + selector(parameter.indexNames[0]) + " } }";
        }
        if (!indices.empty() && below(3) == 0)
            text += (text.empty() ? "{ index { " : ", index { ") + selector(anyIndex()) + " }";
        if (text.empty() || below(8) == 0)
            text += text.empty() ? "{ all" : ", all";
        return text + " }";
    }

    // Values are those of the index: with others, the keys would be unknown to the device.
    std::string selector(const std::string& index) {
        std::string text = below(3) == 0 ? "not " + index : index;
        const auto& values = indices[index];
        if (values.empty() || below(3) == 0)
            return text;
        return text + " { " + values[below(values.size())] + " }";
    }

    std::mt19937 random_; // without a distribution, whose results each library is free to choose
    std::vector<Parameter> parameters_;
};

// The operations on a device in this process. The commit is complete when it returns.
ParameterOperations operationsOn(sim::ValueStore& device) {
    using sim::Target;
    const auto set = [&device](Transaction transaction, Target target,
                               std::span<const KeyValue> values) {
        std::vector<sim::Assignment> assignments;
        for (const auto& [key, value] : values)
            assignments.push_back({std::string(key.view()), std::string(value.view())});
        return !device.set(transaction, target, assignments);
    };
    const auto reset = [&device](Transaction transaction, Target target,
                                 std::span<const CStringView> keys) {
        std::vector<std::string> names;
        for (const auto& key : keys)
            names.emplace_back(key.view());
        return !device.reset(transaction, target, names);
    };
    return {
        .isSendable = [](const RequestTexts&) { return true; },
        .parm_start_trans =
            [&device](Transaction& started) {
                started = device.start();
                return true;
            },
        .parm_end_trans = [&device](Transaction transaction) { return !device.end(transaction); },
        .parm_get =
            [&device](Transaction transaction, std::span<const CStringView> keys,
                      ReceivedStrings& values) {
                std::vector<std::string> names;
                for (const auto& key : keys)
                    names.emplace_back(key.view());
                std::vector<std::string> texts;
                const bool refused = device.get(transaction, names, texts).has_value();
                values = test::receivedStrings(std::move(texts));
                return !refused;
            },
        .parm_set =
            [set](Transaction transaction, std::span<const KeyValue> values) {
                return set(transaction, Target::value, values);
            },
        .parm_set_status =
            [set](Transaction transaction, std::span<const KeyValue> values) {
                return set(transaction, Target::status, values);
            },
        .parm_reset =
            [reset](Transaction transaction, std::span<const CStringView> keys) {
                return reset(transaction, Target::value, keys);
            },
        .parm_reset_status =
            [reset](Transaction transaction, std::span<const CStringView> keys) {
                return reset(transaction, Target::status, keys);
            },
        .parm_commit =
            [&device](Transaction transaction) {
                std::vector<std::string> changed;
                return !device.commit(transaction, changed) && !device.end(transaction);
            },
    };
}

/// One device, its presets, and everything that can be done with them.
class World {
public:
    explicit World(unsigned seed) : generator_(seed) {
        generator_.makeDevice();
        const auto presets = generator_.makePreset("scene") + "all preset { include ro { all } }\n";
        description = generator_.parameterText + presets;
        manager_.emplace(folder_.write("parameters", generator_.parameterText),
                         folder_.write("presets", presets), SystemArguments());
        device_.emplace(test::parametersOf(generator_.parameterText), SystemArguments());
        values_.emplace(*device_);
        operations_ = operationsOn(*values_);
    }

    /// Gives every parameter a new value.
    void scramble() {
        const auto* const keys = manager_->findPreset("all");
        for (const auto& key : (keys != nullptr ? *keys : KeySet()).strings()) {
            const auto target =
                device_->find(key)->isReadOnly() ? sim::Target::status : sim::Target::value;
            const std::vector<sim::Assignment> assignment{{key, generator_.makeValue()}};
            EXPECT_EQ(values_->set({}, target, assignment), std::nullopt);
        }
    }

    bool store(const std::string& file, const std::string& preset = "scene") {
        return storePreset(&operations_, preset, folder_.path(file), *manager_);
    }
    bool storeSub(const std::string& file, const KeySet& keys) {
        return storeSubPreset(&operations_, keys, "scene", folder_.path(file), *manager_);
    }
    bool load(const std::string& file, Defaults defaults = Defaults::off) {
        return loadPreset(&operations_, "scene", folder_.path(file), *manager_, defaults);
    }

    const KeySet* scene() const { return manager_->findPreset("scene"); }
    std::string read(const std::string& file) const { return folder_.read(file); }

    /// The live value of a key.
    std::string value(const std::string& key) const {
        std::vector<std::string> values;
        EXPECT_EQ(values_->get({}, std::vector<std::string>{key}, values), std::nullopt);
        return values.empty() ? "" : values[0];
    }
    std::string defaultOf(const std::string& key) const { return device_->find(key)->defaultValue; }

    /// Every second key of the scene.
    KeySet half() const {
        std::vector<std::string> keys;
        for (std::size_t i = 0; i < scene()->size(); i += 2)
            keys.emplace_back((*scene())[i].view());
        return KeySet(std::move(keys));
    }

    std::string description; ///< for a failed expectation

private:
    Generator generator_;
    const test::TempFolder folder_;
    std::optional<PresetManager> manager_;
    std::optional<sim::Device> device_;
    std::optional<sim::ValueStore> values_;
    ParameterOperations operations_;
};

// Calls `check` with devices on which the preset has keys, until there were enough of them.
template <typename Check>
void onManyDevices(Check check) {
    unsigned devices = 0;
    for (unsigned seed = 0; devices < shapes; ++seed) {
        World world(seed);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + world.description);
        if (world.scene() == nullptr)
            continue;
        world.scramble();
        check(world);
        if (testing::Test::HasFatalFailure())
            return;
        ++devices;
    }
    test::takeLog();
}

TEST(RoundTrip, BringsEveryValueBack) {
    onManyDevices([](World& world) {
        ASSERT_TRUE(world.store("first"));
        world.scramble();
        ASSERT_TRUE(world.load("first"));
        ASSERT_TRUE(world.store("second"));
        ASSERT_EQ(world.read("second"), world.read("first"));
        const auto lines = std::ranges::count(world.read("first"), '\n');
        ASSERT_EQ(static_cast<std::size_t>(lines), world.scene()->size());
    });
}

TEST(RoundTrip, LeavesWhatIsNotInThePresetAlone) {
    onManyDevices([](World& world) {
        ASSERT_TRUE(world.store("everything", "all"));
        world.scramble();
        ASSERT_TRUE(world.store("before", "all"));
        ASSERT_TRUE(world.load("everything"));
        ASSERT_TRUE(world.store("after", "all"));
        std::istringstream everything(world.read("everything"));
        std::istringstream before(world.read("before"));
        std::istringstream after(world.read("after"));
        for (std::string stored, old, now; std::getline(after, now);) {
            std::getline(everything, stored);
            std::getline(before, old);
            const auto key = presetKey(test::entryOf(now));
            ASSERT_EQ(now, world.scene()->contains(key) ? stored : old);
        }
    });
}

TEST(RoundTrip, PutsTheRestToTheDefaults) {
    onManyDevices([](World& world) {
        std::map<std::string, std::string> stored;
        const auto half = world.half();
        for (const auto& key : half.strings())
            stored[key] = world.value(key);
        ASSERT_TRUE(world.storeSub("half", half));
        world.scramble();
        ASSERT_TRUE(world.load("half", Defaults::on));
        for (const auto& key : world.scene()->strings())
            ASSERT_EQ(world.value(key), half.contains(key) ? stored[key] : world.defaultOf(key));
    });
}

} // namespace
} // namespace morvane
