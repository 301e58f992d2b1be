#include "release_comparison.h"
#include "support/temp_folder.h"
#include "variant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {
namespace {

constexpr std::string_view indices = "input index { rangeValid { 1..(inputs) } }\n"
                                     "output index { rangeValid { 7, 8 } }\n";

/// A release for one variant without a name, or for those of a list.
Release release(std::string_view parameters, std::string_view presets,
                std::string_view variants = "") {
    const test::TempFolder folder;
    Settings settings;
    settings.paramDefFile = folder.write("p", std::string(indices).append(parameters));
    settings.presetDefFile = folder.write("d", presets);
    settings.systemArguments = {{"inputs", "2"}};
    if (!variants.empty()) {
        settings.systemArguments.clear();
        settings.variantsFile = folder.write("variants", variants);
        settings.allVariants = true;
    }
    auto device = readDevice(settings);
    return {"release", "parameters.def", std::move(device->definitions),
            std::move(device->variants)};
}

std::string textOf(const ReleaseRow& row) {
    std::string text;
    for (const auto& [before, after] : row.keys)
        text.append(text.empty() ? "" : " ").append(before).append(">").append(after);
    for (const auto& value : row.values)
        text += "; " + value;
    return text;
}

using Found = std::vector<std::pair<Fate, std::string>>;

Found fatesOf(const ReleaseReport& report) {
    Found found;
    for (const auto& row : report.rows)
        found.emplace_back(row.fate, textOf(row));
    return found;
}

struct FateRow {
    const char* why;
    std::string_view before;
    std::string_view after;
    std::string_view presets;
    Found fates;
};

constexpr std::string_view all = "all preset { include ro { all } }\n";

const FateRow fateRows[] = {
    {"the same",
     "gain rw { index { input } }",
     "gain rw { index { input } }",
     "",
     {{Fate::kept, "gain[1]>gain[1] gain[2]>gain[2]"}}},
    {"gone", "gain rw { }", "", "", {{Fate::unlisted, "gain>"}}},
    {"gone from the variant",
     "gain rw { }",
     "gain rw { ctrlValid (0) }",
     "",
     {{Fate::absent, "gain>"}}},
    {"write-only now", "gain rw { }", "gain wo { }", "", {{Fate::absent, "gain>"}}},
    {"write-only before", "gain wo { }", "", "", {}},
    {"removed", "gain rw { }", "", "translate { removed { gain } }", {{Fate::removed, "gain>"}}},
    {"renamed",
     "gain rw { }",
     "level rw { }",
     "translate { level { from { gain } } }",
     {{Fate::renamed, "gain>level"}}},
    {"renamed, not on the variant",
     "gain rw { }",
     "level rw { ctrlValid (0) }",
     "translate { level { from { gain } } }",
     {{Fate::absent, "gain>"}}},
    {"another index, no mapping",
     "gain rw { }",
     "gain rw { index { output } }",
     "",
     {{Fate::unmapped, "gain>"}, {Fate::addedWithoutDefault, ">gain[7] >gain[8]"}}},
    {"another index, no mapping for the count",
     "gain rw { }",
     "gain rw { index { output } }",
     "translate { gain { index 2 { output = idx::0 } } }",
     {{Fate::unmapped, "gain>"}, {Fate::addedWithoutDefault, ">gain[7] >gain[8]"}}},
    {"another index, a mapping of an index too many",
     "gain rw { index { input } }",
     "gain rw { index { output } index { input } }",
     "translate { gain { index 1 { output = idx::0, input = idx::1 } } }",
     {{Fate::badMapping, "gain[1]> gain[2]>"},
      {Fate::addedWithoutDefault, ">gain[7][1] >gain[7][2] >gain[8][1] >gain[8][2]"}}},
    {"another index",
     "gain rw { }",
     "gain rw { index { output } default { 1 } }",
     "translate { gain { index 0 { output = 8 } } }",
     {{Fate::reindexed, "gain>gain[8]"}, {Fate::added, ">gain[7]"}}},
    {"another index, a value that is not there",
     "gain rw { }",
     "gain rw { index { output } }",
     "translate { gain { index 0 { output = 9 } } }",
     {{Fate::noInstance, "gain>"}, {Fate::addedWithoutDefault, ">gain[7] >gain[8]"}}},
    {"other values of the index",
     "gain rw { index { input } }",
     "gain rw { index { output } }",
     "",
     {{Fate::noInstance, "gain[1]> gain[2]>"}, {Fate::addedWithoutDefault, ">gain[7] >gain[8]"}}},
    {"renamed and re-indexed",
     "gain rw { }",
     "level rw { index { output } }",
     "translate { level { from { gain } index 0 { output = 7 } } }",
     {{Fate::renamedAndReindexed, "gain>level[7]"}, {Fate::addedWithoutDefault, ">level[8]"}}},
    {"several keys become one",
     "gain rw { index { input } }",
     "gain rw { }\nlevel rw { }",
     "translate { level { from { gain } } }",
     {{Fate::unmapped, "gain[1]> gain[2]>"},
      {Fate::addedWithoutDefault, ">gain"},
      {Fate::addedWithoutDefault, ">level"}}},
    {"a key becomes one that there was",
     "gain rw { }\nlevel rw { }",
     "level rw { }",
     "translate { level { from { gain } } }",
     {{Fate::setTwice, "level>level"}, {Fate::renamed, "gain>level"}, {Fate::kept, "level>level"}}},
    {"status before and now", "gain ro { }", "gain rostrict { }", "", {{Fate::kept, "gain>gain"}}},
    {"read-only now, included",
     "gain rw { }",
     "gain ro { }",
     "",
     {{Fate::asStatus, "gain>gain"}, {Fate::kept, "gain>gain"}}},
    {"read-write now", "gain ro { }", "gain rw { }", "", {{Fate::kept, "gain>gain"}}},
    {"a default that does not hold",
     "",
     "gain rw { default (0) { 1 } } pan rw { default (1) { 1 } }",
     "",
     {{Fate::added, ">pan"}, {Fate::addedWithoutDefault, ">gain"}}},
};

TEST(ReleaseComparison, SaysWhatBecomesOfAKey) {
    const std::string stays = "stays rw { }\n"; // else the preset is gone with its last key
    const std::pair kept(Fate::kept, std::string("stays>stays"));
    for (const auto& [why, before, after, presets, fates] : fateRows) {
        const auto older = release(stays + std::string(before), all);
        const auto newer = release(stays + std::string(after), std::string(all).append(presets));
        auto found = fatesOf(compareReleases(older, newer));
        EXPECT_EQ(std::erase(found, kept), 1) << why;
        EXPECT_EQ(found, fates) << why;
    }
}

TEST(ReleaseComparison, SaysWhatAPresetDoesNotHaveAnyMore) {
    const auto older = release("gain rw { } pan rw { } temp ro { }", all);
    const auto newer = release("gain rw { } pan ro { } temp ro { }",
                               "all preset { exclude rw { gain } include ro { temp } }");
    EXPECT_EQ(
        fatesOf(compareReleases(older, newer)),
        (Found{{Fate::notInPreset, "gain>"}, {Fate::readOnly, "pan>"}, {Fate::kept, "temp>temp"}}));
}

TEST(ReleaseComparison, LeavesOutKeysThatTheOlderReleaseDoesNotHave) {
    const auto* const included = "all preset { include ro { temp { index { input { 1, 9 } } } } }";
    const auto older = release("temp ro { index { input } }", included);
    EXPECT_EQ(fatesOf(compareReleases(older, older)), (Found{{Fate::kept, "temp[1]>temp[1]"}}));
}

TEST(ReleaseComparison, SaysWhichKeysAPresetIncludesThatAreNotThere) {
    const auto older = release("temp ro { index { output } }", all);
    const auto newer = release("temp ro { index { input } }",
                               "all preset { include ro { temp { index { input { 1, 7 } } } } }");
    EXPECT_EQ(fatesOf(compareReleases(older, newer)),
              (Found{{Fate::noInstance, "temp[8]>"},
                     {Fate::unknownKey, "temp[7]>temp[7]"},
                     {Fate::addedWithoutDefault, ">temp[1]"}}));
}

struct ValueRow {
    const char* why;
    std::string_view before; ///< attributes of the parameter
    std::string_view after;
    std::string_view map;
    Found fates;
};

const ValueRow valueRows[] = {
    {"the same", "rangeValid { 0..9, \"on\" }", "rangeValid { 0..9, \"on\" }", "", {}},
    {"none before, none now", "", "", "", {}},
    {"none now", "rangeValid { 0..9 }", "", "", {}},
    {"none before",
     "",
     "rangeValid { 0..9, \"on\" }",
     "",
     {{Fate::badValue, "all but 0..9, \"on\""}}},
    {"one less", "rangeValid { 0..9 }", "rangeValid { 0..8 }", "", {{Fate::badValue, "9"}}},
    {"one less below", "rangeValid { 0..9 }", "rangeValid { 1..9 }", "", {{Fate::badValue, "0"}}},
    {"both sides",
     "rangeValid { -2147483648..2147483647 }",
     "rangeValid { 0..9 }",
     "",
     {{Fate::badValue, "-2147483648..-1; 10..2147483647"}}},
    {"a gap",
     "rangeValid { 0..9 }",
     "rangeValid { 0..2, 4, \"6\", 7..20 }",
     "",
     {{Fate::badValue, "3; 5"}}},
    {"overlapping spans",
     "rangeValid { 0..9, 5..12 }",
     "rangeValid { 3..4 }",
     "",
     {{Fate::badValue, "0..2; 5..12"}}},
    {"a text",
     "rangeValid { \"on\", \"off\", \"\" }",
     "rangeValid { \"on\" }",
     "",
     {{Fate::badValue, "\"off\""}}},
    {"a number as text",
     "rangeValid { \"5\", \"6\", \"07\" }",
     "rangeValid { 5, 7 }",
     "",
     {{Fate::badValue, "6"}}},
    {"a mapped number",
     "rangeValid { 0..3 }",
     "rangeValid { 0, 2..3 }",
     "{ 1 = 2 }",
     {{Fate::valueMapped, "1 -> 2"}}},
    {"mapped to what is not valid",
     "rangeValid { \"on\", \"off\" }",
     "rangeValid { 0..1 }",
     "{ on = 1, off = 2 }",
     {{Fate::badValue, "\"off\" -> 2"}, {Fate::valueMapped, "\"off\" -> 2; \"on\" -> 1"}}},
    {"mapped, but never stored",
     "rangeValid { \"on\" }",
     "rangeValid { \"on\" }",
     "{ off = no }",
     {}},
    {"mapped, any before",
     "",
     "rangeValid { 0..1 }",
     "{ on = 1, off = 2 }",
     {{Fate::badValue, "\"off\" -> 2; all but 0..1"},
      {Fate::valueMapped, "\"off\" -> 2; \"on\" -> 1"}}},
    {"another notation is not mapped",
     "rangeValid { 0x10 }",
     "rangeValid { 1 }",
     "{ 0x10 = 1 }",
     {{Fate::badValue, "16"}, {Fate::valueMapped, "\"0x10\" -> 1"}}},
    {"a condition about a parameter",
     "rangeValid { 0..3 }",
     "rangeValid { 0 } rangeValid (gain == 0) { 1, 2 }",
     "",
     {{Fate::badValue, "3"}, {Fate::undecidedValue, "1..2"}}},
    {"a bound that is a parameter now",
     "rangeValid { 0..3 }",
     "rangeValid { 0 } rangeValid { 1..(gain) }",
     "",
     {{Fate::undecidedValue, "1..3"}}},
    {"a bound that was a parameter",
     "rangeValid { 0..(gain) }",
     "rangeValid { 0 }",
     "",
     {{Fate::undecidedValue, "what a bound that names a parameter allows"}}},
    {"any before, a bound that is a parameter now",
     "",
     "rangeValid { 0..(gain) }",
     "",
     {{Fate::undecidedValue, "all but it has none on this variant"}}},
};

TEST(ReleaseComparison, SaysWhatBecomesOfValues) {
    for (const auto& [why, before, after, map, fates] : valueRows) {
        const auto older = release(std::string("gain rw { ").append(before) + " }", all);
        const auto mapping = std::string("translate { gain { from { gain ").append(map) + "} } }";
        const auto newer = release(std::string("gain rw { ").append(after) + " }",
                                   std::string(all).append(map.empty() ? "" : mapping));
        Found found;
        for (const auto& row : compareReleases(older, newer).rows) {
            if (row.fate == Fate::kept)
                continue;
            const auto text = textOf(row);
            found.emplace_back(row.fate, text.substr(text.find("; ") + 2));
        }
        EXPECT_EQ(found, fates) << why;
    }
}

TEST(ReleaseComparison, KeepsTogetherWhatIsAlike) {
    const auto older = release("gain rw { index { input } } mode rw { }",
                               "one preset { } two preset { }\n"
                               "three preset { exclude rw { mode } } gone preset { }",
                               "a: inputs=1\nb: inputs=2\nc: inputs=2\n");
    const auto newer = release("gain rw { index { input } } mode rw { }",
                               "one preset { } two preset { exclude rw { mode } } three preset { }",
                               "b: inputs=2\na: inputs=1\n");
    const auto report = compareReleases(older, newer);
    EXPECT_EQ(report.goneVariants, std::vector<std::string>{"c"});
    const std::vector<std::string> gone{"gone"};
    EXPECT_EQ(report.gonePresets, (std::vector<PresetsOnVariant>{{0, gone}, {1, gone}}));
    const std::vector<std::string> three{"one", "three", "two"};
    EXPECT_EQ(report.compared, (std::vector<PresetsOnVariant>{{0, three}, {1, three}}));
    EXPECT_EQ(fatesOf(report), (Found{{Fate::notInPreset, "mode>"},
                                      {Fate::kept, "gain[1]>gain[1]"},
                                      {Fate::kept, "gain[2]>gain[2]"},
                                      {Fate::kept, "mode>mode"},
                                      {Fate::addedWithoutDefault, ">mode"}}));
    EXPECT_EQ(report.rows.at(0).places,
              (std::vector<PresetsOnVariant>{{0, {"two"}}, {1, {"two"}}}));
    EXPECT_EQ(report.rows.at(2).places, (std::vector<PresetsOnVariant>{{1, three}}));
    EXPECT_EQ(report.rows.at(3).places,
              (std::vector<PresetsOnVariant>{{0, {"one"}}, {1, {"one"}}}));
}

TEST(ReleaseComparison, TellsPresetsApartThatWereTheSame) {
    const auto older = release("gain rw { } mode rw { }", "one preset { } two preset { }");
    const auto newer = release("gain rw { } mode rw { }", "one preset { exclude rw { gain } } "
                                                          "two preset { exclude rw { mode } }");
    const auto report = compareReleases(older, newer);
    EXPECT_EQ(fatesOf(report), (Found{{Fate::notInPreset, "gain>"},
                                      {Fate::notInPreset, "mode>"},
                                      {Fate::kept, "gain>gain"},
                                      {Fate::kept, "mode>mode"}}));
    EXPECT_EQ(report.rows.at(0).places, (std::vector<PresetsOnVariant>{{0, {"one"}}}));
    EXPECT_EQ(report.rows.at(2).places, (std::vector<PresetsOnVariant>{{0, {"two"}}}));
}

TEST(ReleaseComparison, HasALossThatIsNotSaid) {
    const auto older = release("gain rw { } mode rw { rangeValid { 1 } }", all);
    const auto hasLoss = [&](std::string_view parameters, std::string_view presets) {
        return compareReleases(older, release(parameters, presets)).hasLoss();
    };
    EXPECT_FALSE(hasLoss("gain rw { } mode rw { rangeValid { 1 } }", all));
    EXPECT_FALSE(hasLoss("gain rw { } mode rw { }", "all preset { exclude rw { mode } }"));
    EXPECT_TRUE(hasLoss("gain rw { }", all));
    EXPECT_TRUE(hasLoss("gain rw { } mode rw { rangeValid { 2 } }", all));
    EXPECT_TRUE(hasLoss("gain rw { } mode rw { }", "other preset { }"));
}

} // namespace
} // namespace morvane::ctl
