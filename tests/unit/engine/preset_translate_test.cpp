#include "core/preset_manager.h"
#include "engine/preset_translate.h"
#include "support/output_capture.h"
#include "support/preset_lines.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

constexpr std::string_view parameters = "channel index { rangeValid { 0..3 } }\n"
                                        "band index { rangeValid { 0..3 } }\n"
                                        "gain rw { index { channel } index { band } }\n"
                                        "level rw { index { channel } }\n"
                                        "mode rw { }\n"
                                        "state ro { index { channel } }\n"
                                        "serial rostrict { }\n"
                                        "trigger wo { }\n"
                                        "absent rw { ctrlValid (0) }\n"
                                        "fast rw { }\n"
                                        "slow rw { }\n";

constexpr std::string_view presets =
    "scene preset { }\n"
    "translate {\n"
    "  removed { tone, dimmer }\n"
    "  mode { from { way { on = 1, \"half on\" = 2 } } }\n"
    "  absent { from { away } }\n"
    "  fast { from { slow { 1 = 2, 2 = 3 } } } slow { from { fast } }\n"
    "  level { from { height { 1 = 10 } } from { mode2 }\n"
    "    index 2 { channel = idx::1 } index 3 { channel = pre-idx::2 }\n"
    "    index 4 { channel = idx::4 } index 5 { channel = xidx::0 }\n"
    "    index 6 { channel = idx::abc } index 7 { channel = idx::-1 }\n"
    "    index 8 { channel = idx::01idx::7 } index 9 { channel = idx::99999999999 } }\n"
    "  gain { index 1 { band = 0, channel = idx::0 } index 2 { band = x, channel = y }\n"
    "    index 0 { channel = 1, band = idx::0 } }\n"
    "  state { from { status } from { dimmer } index 0 { channel = 2 } }\n"
    "}\n";

constexpr const char* noErrors = "";
constexpr const char* dropped = "dropped";
constexpr const char* unusable = "";

struct Row {
    const char* why;
    const char* line;   ///< of the older file
    const char* result; ///< the line that it is loaded as, its key empty if it is not applied
    std::string errors; ///< on standard error
};

std::string noTemplate(const char* name, int count) {
    return std::string("PresetTranslate::translate() Error:Could not located index mapping for ") +
           name + " with " + std::to_string(count) + " indices\n";
}

std::string noIndex(const char* element, const char* name, int count) {
    return std::string("PresetTranslate::translate() Error:Could not locate index value for ") +
           element + " for parameter " + name + "with " + std::to_string(count) + " indices\n";
}

const Row rows[] = {
    {"a current parameter", "mode=5", "mode=5", noErrors},
    {"a current parameter with indices", "gain[3][2]=5", "gain[3][2]=5", noErrors},
    {"a read-only parameter", "serial=A", "serial=A", noErrors},
    {"an index that does not exist", "gain[x][]=5", "gain[x][]=5", noErrors},
    {"indices of a parameter without templates and indices", "mode[1][2]=5", "mode[1][2]=5",
     noErrors},

    {"a removed parameter", "tone=5", dropped, noErrors},
    {"a removed parameter with indices", "tone[1]=5", dropped, noErrors},
    {"an unknown parameter", "nothing=5", dropped, noErrors},
    {"a write-only parameter", "trigger=1", dropped, noErrors},
    {"an index", "channel=1", dropped, noErrors},
    {"a parameter that this device does not have", "absent=1", dropped, noErrors},
    {"a new name that this device does not have", "away=1", dropped, noErrors},
    {"a name in capitals", "Mode=1", dropped, noErrors},
    {"a name with a trailing blank", "mode =1", dropped, noErrors},

    {"a new name", "mode2[1]=5", "level[1]=5", noErrors},
    {"a new name and a new value", "way=on", "mode=1", noErrors},
    {"an old value with a blank", "way=half on", "mode=2", noErrors},
    {"a value that is not mapped", "way=off", "mode=off", noErrors},
    {"a value that only begins like one", "way=on2", "mode=on2", noErrors},
    {"a value in capitals", "way=On", "mode=On", noErrors},
    {"a value with a trailing blank", "way=on ", "mode=on ", noErrors},
    {"the current name has no value map", "mode=on", "mode=on", noErrors},
    {"two parameters have exchanged their names", "slow=1", "fast=2", noErrors},
    {"and the other way round", "fast=1", "slow=1", noErrors},
    {"a removed name that has a new one is renamed first", "dimmer[1]=5", "state[1]=5", noErrors},
    {"a new name, a new value and a new index", "height[1][2]=1", "level[2]=10", noErrors},

    {"a gained index", "gain[3]=5", "gain[3][0]=5", noErrors},
    {"a lost index", "level[1][2]=5", "level[2]=5", noErrors},
    {"an index out of nothing", "state=5", "state[2]=5", noErrors},
    {"an index out of nothing after a new name", "status=5", "state[2]=5", noErrors},
    {"today's number of indices is never mapped", "gain[3][2]=5", "gain[3][2]=5", noErrors},
    {"a reference anywhere in an element", "level[1][2][3]=5", "level[3]=5", noErrors},
    {"a reference with something before it", "level[a][b][c][d][e]=5", "level[a]=5", noErrors},
    {"a reference without a number is to the first", "level[a][b][c][d][e][f]=5", "level[a]=5",
     noErrors},
    {"the first reference of an element counts, up to its number",
     "level[a][b][c][d][e][f][g][h]=5", "level[b]=5", noErrors},

    {"no template for this number of indices", "gain[1][2][3]=5", unusable, noTemplate("gain", 3)},
    {"no template for no indices", "level=5", unusable, noTemplate("level", 0)},
    {"a reference beyond the last index", "level[1][2][3][4]=5", unusable,
     noIndex("idx::4", "level", 4)},
    {"a reference to an index where there is none", "gain=5", unusable,
     noIndex("idx::0", "gain", 0)},
    {"a negative reference", "level[1][2][3][4][5][6][7]=5", unusable,
     noIndex("idx::-1", "level", 7)},
    {"a reference beyond 32 bits", "level[1][2][3][4][5][6][7][8][9]=5", unusable,
     noIndex("idx::99999999999", "level", 9)},
};

class PresetTranslateTest : public testing::Test {
protected:
    const test::TempFolder folder_;
    const PresetManager manager_{
        folder_.write("parameters", parameters), folder_.write("presets", presets), {}};
};

TEST_F(PresetTranslateTest, TranslatesOlderEntries) {
    ASSERT_TRUE(manager_.is_preset("scene"));
    for (const auto& [why, line, result, errors] : rows) {
        SCOPED_TRACE(why);
        auto entry = test::entryOf(line);
        bool kept = false;
        EXPECT_EQ(test::standardErrorOf([&] {
                      kept = translateEntry(manager_.translation(), entry) &&
                             isOfKnownParameter(manager_, entry);
                  }),
                  errors);
        if (!kept)
            EXPECT_EQ(dropped, result);
        else
            EXPECT_EQ(entry.name.empty() ? unusable : formatPresetLine(entry), result);
    }
}

} // namespace
} // namespace morvane
