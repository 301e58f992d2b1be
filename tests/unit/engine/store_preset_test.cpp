#include "core/preset_manager.h"
#include "engine/store_preset.h"
#include "support/file_recorder.h"
#include "support/log_recorder.h"
#include "support/parameter_recorder.h"
#include "support/retry_log.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <syslog.h>

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

namespace morvane {
namespace {

using Calls = std::vector<std::string>;
using Log = std::vector<test::LogRecord>;

constexpr std::string_view parameters = "input index { rangeValid { 1..2 } }\n"
                                        "gain rw { index { input } }\n"
                                        "mode rw { }\n"
                                        "other rw { index { input } }\n";
constexpr std::string_view presets = "scene preset { exclude rw { other } }\n"
                                     "nothing preset { exclude rw { all } }\n";

class StorePreset : public testing::Test {
protected:
    StorePreset() {
        handler_.values = {
            {"gain[1]", "-3"}, {"gain[2]", "4 "}, {"mode", "a=b"}, {"other[1]", "9"}};
        test::takeLog();
        test::takeSleeps();
    }

    bool store(const std::string& preset = "scene") {
        const auto operations = handler_.operations();
        return storePreset(&operations, preset, path_, manager_);
    }

    bool storeSub(std::vector<std::string> keys, const std::string& preset = "scene") {
        const auto operations = handler_.operations();
        return storeSubPreset(&operations, KeySet(std::move(keys)), preset, path_, manager_);
    }

    test::LogRecord stored() const {
        return {LOG_INFO, "storePreset(): scene preset stored in " + path_};
    }
    test::LogRecord subStored() const {
        return {LOG_INFO, "storeSubPreset(): scene sub-preset store completed in " + path_};
    }

    const test::TempFolder folder_;
    const std::string path_ = folder_.path("p");
    const PresetManager manager_{
        folder_.write("parameters", parameters), folder_.write("presets", presets), {}};
    test::ParameterRecorder handler_;

    const std::string start_ = "parm_start_trans";
    const std::string get_ = "parm_get 7 gain[1] gain[2] mode";
    const std::string end_ = "parm_end_trans 7";
};

TEST_F(StorePreset, WritesTheValuesOfAllKeys) {
    EXPECT_TRUE(store());
    EXPECT_EQ(handler_.calls, (Calls{start_, get_, end_}));
    EXPECT_EQ(folder_.read("p"), "gain[1]=-3\ngain[2]=4 \nmode=a=b\n");
    EXPECT_EQ(test::takeLog(), Log{stored()});
}

TEST_F(StorePreset, ReplacesTheFileAndLeavesNoBackup) {
    folder_.write("p", "something=else\n");
    EXPECT_TRUE(store());
    EXPECT_EQ(folder_.read("p"), "gain[1]=-3\ngain[2]=4 \nmode=a=b\n");
    EXPECT_FALSE(folder_.exists("p_bak"));
}

TEST_F(StorePreset, FailsSilentlyWithoutAConnection) {
    EXPECT_FALSE(storePreset(nullptr, "scene", path_, manager_));
    EXPECT_FALSE(storeSubPreset(nullptr, KeySet({"mode"}), "scene", path_, manager_));
    EXPECT_EQ(test::takeLog(), Log{});
    EXPECT_FALSE(folder_.exists("p"));
}

TEST_F(StorePreset, FailsForAPresetThatIsMissingOrCoversNothing) {
    for (const char* const preset : {"unknown", "nothing", ""}) {
        EXPECT_FALSE(store(preset));
        EXPECT_EQ(test::takeLog(), (Log{{LOG_ERR, std::string("storePreset(): Could not locate '") +
                                                      preset + "' preset definition\n"}}));
    }
    EXPECT_EQ(handler_.calls, Calls{});
    EXPECT_FALSE(folder_.exists("p"));
}

TEST_F(StorePreset, EndsTheFileAtAnEmptyValueAndSucceeds) {
    handler_.values["gain[2]"] = "";
    EXPECT_TRUE(store());
    EXPECT_EQ(folder_.read("p"), "gain[1]=-3\n");
    EXPECT_EQ(test::takeLog(), Log{stored()});
    EXPECT_EQ(handler_.calls, (Calls{start_, get_, end_}));
}

TEST_F(StorePreset, ChecksThatItCanSendBeforeItStarts) {
    handler_.refusesToSend = true;
    folder_.write("p", "old");
    EXPECT_FALSE(store());
    EXPECT_FALSE(storeSub({"mode", "gain[2]", "elsewhere"}));
    EXPECT_EQ(handler_.checks, (Calls{"scene: gain[1] gain[2] mode", "scene: gain[2] mode"}));
    EXPECT_EQ(handler_.calls, Calls{});
    EXPECT_EQ(test::takeLog(), Log{}) << "who refuses says why";
    EXPECT_EQ(folder_.read("p"), "old");
}

struct RefusalRow {
    const char* operation;
    Calls calls;
};

TEST_F(StorePreset, RetriesEachOperation) {
    const RefusalRow rows[] = {
        {"parm_start_trans", {start_ + " refused", start_, get_, end_}},
        {"parm_get", {start_, get_ + " refused", get_, end_}},
        {"parm_end_trans", {start_, get_, end_ + " refused", end_}},
    };
    for (const auto& [operation, calls] : rows) {
        SCOPED_TRACE(operation);
        handler_.calls.clear();
        handler_.refusals = {{operation, 1}};
        EXPECT_TRUE(store());
        EXPECT_EQ(handler_.calls, calls);
        EXPECT_EQ(test::takeSleeps(), std::vector<unsigned>(1, 1));
        EXPECT_EQ(folder_.read("p"), "gain[1]=-3\ngain[2]=4 \nmode=a=b\n");
    }
}

TEST_F(StorePreset, GivesUpOnStartAndLeavesTheFileAlone) {
    handler_.refusals["parm_start_trans"] = 10;
    folder_.write("p", "old");
    EXPECT_FALSE(store());
    EXPECT_EQ(handler_.calls, Calls(10, start_ + " refused"));
    EXPECT_EQ(test::takeLog(), test::attempts("parm_start_trans", 10, {test::handlerLost}));
    EXPECT_EQ(test::takeSleeps(), std::vector<unsigned>(9, 1));
    EXPECT_EQ(folder_.read("p"), "old");
}

TEST_F(StorePreset, GivesUpOnGetWithoutEndingTheTransaction) {
    handler_.refusals["parm_get"] = 10;
    folder_.write("p", "old");
    EXPECT_FALSE(store());
    EXPECT_EQ(handler_.calls.size(), 11U);
    EXPECT_EQ(handler_.calls.back(), get_ + " refused");
    EXPECT_EQ(test::takeLog(), test::attempts("parm_get", 10, {test::handlerLost}));
    EXPECT_EQ(folder_.read("p"), "old");
}

TEST_F(StorePreset, FailsWhenTheTransactionCannotBeEndedAlthoughTheFileIsComplete) {
    handler_.refusals["parm_end_trans"] = 10;
    EXPECT_FALSE(store());
    EXPECT_EQ(folder_.read("p"), "gain[1]=-3\ngain[2]=4 \nmode=a=b\n");
    EXPECT_FALSE(folder_.exists("p_bak"));
    auto log = test::attempts("parm_end_trans", 10, {test::handlerLost});
    log.insert(log.begin(), stored());
    EXPECT_EQ(test::takeLog(), log);
}

TEST_F(StorePreset, FailsWhenTheFileCannotBeOpenedAndLeavesTheTransactionOpen) {
    test::FileRecorder files;
    files.fail("open p", EACCES);
    EXPECT_FALSE(store());
    EXPECT_EQ(handler_.calls, (Calls{start_, get_}));
    EXPECT_EQ(test::takeLog(),
              (Log{{LOG_ERR, "storePreset(): Error opening file " + path_ + "\n"}}));
}

TEST_F(StorePreset, FailsWhenTheBackupCannotBeMade) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("rename p p_bak", EACCES);
    EXPECT_FALSE(store());
    EXPECT_EQ(handler_.calls, (Calls{start_, get_}));
    EXPECT_EQ(test::takeLog(),
              (Log{{LOG_ERR, "Error renaming file " + path_ + " to " + path_ + "_bak"},
                   {LOG_ERR, "storePreset(): Error opening file " + path_ + "\n"}}));
    EXPECT_EQ(folder_.read("p"), "old");
}

TEST_F(StorePreset, FailsWhenTheFileCannotBeKeptAndLeavesTheTransactionOpen) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("fsync p", EIO);
    EXPECT_FALSE(store());
    EXPECT_EQ(handler_.calls, (Calls{start_, get_}));
    EXPECT_EQ(test::takeLog(), (Log{stored(), {LOG_ERR, "Error writing file " + path_}}));
    EXPECT_EQ(folder_.read("p"), "old");
}

TEST_F(StorePreset, EndsTheTransactionOnlyWhenTheBackupIsGone) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("remove p_bak", EACCES);
    EXPECT_FALSE(store());
    EXPECT_EQ(handler_.calls, (Calls{start_, get_}));
    EXPECT_EQ(test::takeLog(), (Log{stored(), {LOG_ERR, "Error removing file " + path_ + "_bak"}}));
}

TEST_F(StorePreset, WritesOnlyTheChosenKeysOfASubPreset) {
    folder_.write("p", "mode=before\n");
    EXPECT_TRUE(storeSub({"other[3]", "gain[1]", "gain[1]", "gain"}));
    EXPECT_EQ(handler_.calls, (Calls{start_, "parm_get 7 gain[1]", end_}));
    EXPECT_EQ(folder_.read("p"), "gain[1]=-3\n");
    EXPECT_EQ(test::takeLog(), Log{subStored()});
}

TEST_F(StorePreset, RefusesASubPresetWithoutKeysBeforeAnythingElse) {
    EXPECT_FALSE(storeSub({}, "unknown"));
    EXPECT_EQ(test::takeLog(), (Log{{LOG_ERR, "storeSubPreset(): Sub-preset list is empty.\n"}}));
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(StorePreset, RefusesASubPresetOfAnUnknownPreset) {
    EXPECT_FALSE(storeSub({"mode"}, "unknown"));
    EXPECT_EQ(test::takeLog(),
              (Log{{LOG_ERR, "storeSubPreset(): Preset definition unknown does not exist.\n"}}));
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(StorePreset, RefusesASubPresetOfForeignKeysAndLeavesTheTransactionOpen) {
    folder_.write("p", "old");
    EXPECT_FALSE(storeSub({"other[1]", "gain[3]", "scene"}));
    EXPECT_EQ(handler_.calls, Calls{start_});
    EXPECT_EQ(test::takeLog(),
              (Log{{LOG_ERR, "storeSubPreset(): Sub-preset list contains no entries belonging to "
                             "the scene preset definition.\n"}}));
    EXPECT_EQ(folder_.read("p"), "old");
}

TEST_F(StorePreset, NamesTheSubPresetWhenItsFileCannotBeOpened) {
    test::FileRecorder files;
    files.fail("open p", EACCES);
    EXPECT_FALSE(storeSub({"mode"}));
    EXPECT_EQ(handler_.calls, (Calls{start_, "parm_get 7 mode"}));
    EXPECT_EQ(test::takeLog(),
              (Log{{LOG_ERR, "storeSubPreset(): Error opening file " + path_ + "\n"}}));
}

} // namespace
} // namespace morvane
