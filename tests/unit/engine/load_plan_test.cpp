#include "core/preset_manager.h"
#include "engine/load_plan.h"
#include "support/output_capture.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {
namespace {

using Lines = std::vector<std::string>;

// "x" is a parameter and the old name of another; "level" has lost an index, which "gain" has not.
// One device has a parameter whose keys do not read back as themselves.
constexpr std::string_view parameters = "input index { rangeValid { 1..3 } }\n"
                                        "odd index { rangeValid { \"a]b\", \"c=d\", \"1\" } }\n"
                                        "gain rw { index { input } }\n"
                                        "level rw { index { input } }\n"
                                        "mode rw { }\n"
                                        "x rw { }\n"
                                        "y rw { }\n"
                                        "strange rw { ctrlValid (isOdd) index { odd } }\n"
                                        "status ro { index { input } }\n"
                                        "state ro { }\n";
constexpr std::string_view presets =
    "plain preset { include ro { all } exclude rw { strange } }\n"
    "odd preset { include ro { all } }\n"
    "translate { removed { tone } y { from { x { on = 1 } } }\n"
    "            mode { from { way } } level { index 2 { input = idx::0 } } }\n";

class LoadPlanTest : public testing::Test {
protected:
    // That of the preset of the same name.
    const PresetManager& device(std::string_view preset) const {
        return preset == "odd" ? odd_ : plain_;
    }

    const KeySet& keys(const char* preset) const { return *device(preset).findPreset(preset); }

    // What a plan sends, one text for each list.
    static Lines sent(LoadPlan& plan) {
        Lines lists{plan.empty() ? "empty" : ""};
        for (const auto& values : {plan.values(), plan.statusValues()}) {
            auto& text = lists.emplace_back();
            for (const auto& [key, value] : values)
                text.append(" ").append(key.view()).append("=").append(value.view());
        }
        const auto unset = plan.unsetKeys();
        for (const auto& list : {unset.keys, unset.statusKeys}) {
            auto& text = lists.emplace_back();
            for (const auto& key : list)
                text.append(" ").append(key.view());
        }
        return lists;
    }

    // Every line is parsed and translated.
    Lines sentByParsing(const char* preset, const Lines& lines) const {
        LoadPlan plan(device(preset), keys(preset));
        for (const auto& line : lines)
            addParsed(plan, line);
        return sent(plan);
    }

    // A line is parsed only if it has to be.
    Lines sentAsByLoads(const char* preset, const Lines& lines) const {
        LoadPlan plan(device(preset), keys(preset));
        for (const auto& line : lines) {
            if (!plan.addAsWritten(line))
                addParsed(plan, line);
        }
        return sent(plan);
    }

    bool isAddedAsWritten(const char* preset, std::string_view line) const {
        LoadPlan plan(device(preset), keys(preset));
        const bool added = plan.addAsWritten(line);
        LoadPlan untouched(device(preset), keys(preset));
        EXPECT_EQ(added, sent(plan) != sent(untouched)) << "all or nothing";
        return added;
    }

    const test::TempFolder folder_;
    const std::string parametersPath_ = folder_.write("parameters", parameters);
    const std::string presetsPath_ = folder_.write("presets", presets);
    const PresetManager plain_{parametersPath_, presetsPath_, {}};
    const PresetManager odd_{parametersPath_, presetsPath_, {{"isOdd", "1"}}};

private:
    static void addParsed(LoadPlan& plan, std::string_view line) {
        PresetEntry entry;
        parsePresetLine(line, entry);
        if (!entry.name.empty() && !entry.value.empty())
            plan.add(entry);
    }
};

struct Row {
    const char* why;
    std::string_view line;
    bool isAddedAsWritten; ///< to the preset "plain"
};

constexpr Row rows[] = {
    {"a key of the preset", "gain[2]=5\n", true},
    {"without an index", "mode=auto\n", true},
    {"a status", "status[1]=ok\n", true},
    {"a value with = and brackets", "mode=a=[b]\n", true},
    {"white space at the end", "mode= a \r\n", true},
    {"the last line", "mode=auto", true},
    {"no value", "mode=\n", false},
    {"a value of white space", "mode=\t\n", false},
    {"no =", "mode\n", false},
    {"nothing", "", false},
    {"a line feed", "\n", false},
    {"no key", "=1\n", false},
    {"another index", "gain[4]=5\n", false},
    {"an unclosed group", "mode[1=5\n", false},
    {"text behind a group", "gain[1]x=5\n", false},
    {"a blank before the =", "mode =5\n", false},
    {"white space before the =", "mode\t=5\n", false},
    {"a key that another begins with", "mod=5\n", false},
    {"not of the preset", "strange[1]=5\n", false},
    {"an old name", "way=5\n", false},
    {"an old name of which there is a parameter", "x=5\n", false},
    {"a removed parameter", "tone=5\n", false},
    {"a parameter with an index mapping", "level[1]=5\n", false},
};

TEST_F(LoadPlanTest, ParsesOnlyWhatMayMeanSomethingElse) {
    for (const auto& [why, line, expected] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(isAddedAsWritten("plain", line), expected);
        EXPECT_FALSE(isAddedAsWritten("odd", line)) << "where keys may not read back as themselves";
        const Lines lines{"mode=0\n", std::string(line), "gain[3]=1\n", std::string(line)};
        for (const char* const preset : {"plain", "odd"})
            EXPECT_EQ(sentAsByLoads(preset, lines), sentByParsing(preset, lines));
    }
}

TEST_F(LoadPlanTest, TakesKeysInAnyOrderAndAgain) {
    EXPECT_EQ(sentAsByLoads("plain", {"y=1\n", "gain[1]=2\n", "gain[3]=3\n", "gain[1]=4\n",
                                      "state=5\n", "gain[2]=6\n", "status[3]=7\n", "y=8\n"}),
              (Lines{"", " y=1 gain[1]=2 gain[3]=3 gain[1]=4 gain[2]=6 y=8", " state=5 status[3]=7",
                     " level[1] level[2] level[3] mode x", " status[1] status[2]"}));
}

// A line of such a key reads as another one, which the preset may have or not.
TEST_F(LoadPlanTest, SetsNothingForAKeyThatDoesNotReadBackAsItself) {
    ASSERT_TRUE(keys("odd").contains("strange[a]b]"));
    ASSERT_TRUE(keys("odd").contains("strange[c=d]"));
    EXPECT_EQ(sentAsByLoads("odd", {"strange[a]b]=5\n", "strange[c=d]=5\n"}).at(1), "");
    EXPECT_EQ(sentAsByLoads("odd", {"strange[1]b]=5\n"}).at(1), " strange[1]=5");
}

TEST_F(LoadPlanTest, TranslatesANameThatIsAParameterToday) {
    EXPECT_EQ(sentAsByLoads("plain", {"x=5\n", "x=on\n", "y=on\n"}).at(1), " y=5 y=1 y=on");
    EXPECT_EQ(sentAsByLoads("plain", {"level[1][2]=5\n", "level[2]=6\n"}).at(1),
              " level[1]=5 level[2]=6");
    EXPECT_EQ(sentAsByLoads("plain", {"tone=5\n"}), sentAsByLoads("plain", {"nothing=5\n"}));
}

// Lines put together from what keys and lines are made of.
TEST_F(LoadPlanTest, SendsWhatParsingEveryLineSends) {
    constexpr std::array<std::string_view, 12> names{"gain",   "level", "mode",  "tone",
                                                     "x",      "y",     "way",   "strange",
                                                     "status", "state", "other", ""};
    constexpr std::array<std::string_view, 14> groups{"",      "[1]",    "[2]",  "[3]", "[9]",
                                                      "[]",    "[1][2]", "[1]x", "[1",  "[a]b]",
                                                      "[c=d]", " ",      "]",    "[[1]"};
    constexpr std::array<std::string_view, 8> values{"=1",   "=on", "=", "=\t",
                                                     "= 1 ", "==",  "",  "=a=b"};
    constexpr std::array<std::string_view, 5> ends{"\n", "\r\n", "", "\t\n", " \n"};
    std::minstd_rand random(16);
    const auto any = [&random](const auto& texts) { return texts[random() % texts.size()]; };
    test::standardErrorOf([&] {
        for (int file = 0; file < 2000; ++file) {
            Lines lines(random() % 20);
            for (auto& line : lines)
                line.append(any(names)).append(any(groups)).append(any(values)).append(any(ends));
            for (const char* const preset : {"plain", "odd"})
                EXPECT_EQ(sentAsByLoads(preset, lines), sentByParsing(preset, lines))
                    << testing::PrintToString(lines);
        }
    });
}

} // namespace
} // namespace morvane
