#include "core/preset_manager.h"
#include "engine/load_preset.h"
#include "support/file_recorder.h"
#include "support/log_recorder.h"
#include "support/output_capture.h"
#include "support/parameter_recorder.h"
#include "support/retry_log.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <syslog.h>

#include <cerrno>
#include <string>
#include <vector>

namespace morvane {
namespace {

using Calls = std::vector<std::string>;
using Log = std::vector<test::LogRecord>;

constexpr std::string_view parameters = "input index { rangeValid { 1..2 } }\n"
                                        "gain rw { index { input } }\n"
                                        "mode rw { }\n"
                                        "other rw { }\n"
                                        "status ro { }\n"
                                        "serial rostrict { index { input } }\n"
                                        "temperature ro { }\n";
constexpr std::string_view presets =
    "scene preset { include ro { status, serial } exclude rw { other } }\n"
    "plain preset { exclude rw { other } }\n"
    "states preset { include ro { status } exclude rw { all } }\n"
    "nothing preset { exclude rw { all } }\n"
    "translate { removed { tone } mode { from { way } } gain { index 0 { input = 1 } } }\n";

class LoadPreset : public testing::Test {
protected:
    LoadPreset() {
        test::takeLog();
        test::takeSleeps();
    }

    bool load(const std::string& preset = "scene", Defaults defaults = Defaults::off) {
        const auto operations = handler_.operations();
        return loadPreset(&operations, preset, path_, manager_, defaults);
    }

    bool loadFile(std::string_view content, const std::string& preset = "scene",
                  Defaults defaults = Defaults::off) {
        folder_.write("p", content);
        return load(preset, defaults);
    }

    bool defaults(const std::string& preset) {
        const auto operations = handler_.operations();
        return loadDefaults(&operations, preset, manager_);
    }

    test::LogRecord loaded(const char* how = "without defaults") const {
        return {LOG_INFO, std::string("loadPreset(): scene preset loaded (") + how + ") from " +
                              path_ + ".\n"};
    }
    test::LogRecord empty(int priority) const {
        return {priority, "Empty preset file: " + path_ + "\n"};
    }
    test::LogRecord unopened() const { return {LOG_ERR, "Error opening file: " + path_ + "\n"}; }

    const test::TempFolder folder_;
    const std::string path_ = folder_.path("p");
    const PresetManager manager_{
        folder_.write("parameters", parameters), folder_.write("presets", presets), {}};
    test::ParameterRecorder handler_;
};

struct Row {
    const char* why;
    const char* preset;
    const char* content;
    Defaults what;
    Calls calls; ///< between start and commit
};

// The recorder sees the calls for empty collections, too; nothing is sent for them.
const Row rows[] = {
    {"values and status values in file order",
     "scene",
     "mode=auto\nserial[2]=B\ngain[2]=-3\nstatus=ok\n",
     Defaults::off,
     {"parm_set 7 mode=auto gain[2]=-3", "parm_set_status 7 serial[2]=B status=ok"}},
    {"keys of the preset and others",
     "scene",
     "other=1\nmode=2\ngain=3\ngain[3]=4\ntemperature=5\n",
     Defaults::off,
     {"parm_set 7 mode=2 gain[1]=3", "parm_set_status 7"}},
    {"only keys that are not of the preset",
     "scene",
     "other=1\n",
     Defaults::off,
     {"parm_set 7", "parm_set_status 7"}},
    {"a key twice is set twice, in file order",
     "scene",
     "gain[1]=5\nmode=1\ngain[1]=6\n",
     Defaults::off,
     {"parm_set 7 gain[1]=5 mode=1 gain[1]=6", "parm_set_status 7"}},
    {"an older name",
     "scene",
     "way=3\ntone=4\n",
     Defaults::off,
     {"parm_set 7 mode=3", "parm_set_status 7"}},
    {"lines that are no entries",
     "scene",
     "# mode=1\n\nmode\nmode=\n=1\nmode=2\n",
     Defaults::off,
     {"parm_set 7 mode=2", "parm_set_status 7"}},
    {"values as they are",
     "scene",
     "mode= a=b \r\n",
     Defaults::off,
     {"parm_set 7 mode= a=b ", "parm_set_status 7"}},
    {"a last line without a line feed",
     "scene",
     "mode=1",
     Defaults::off,
     {"parm_set 7 mode=1", "parm_set_status 7"}},
    {"defaults for the rest",
     "scene",
     "gain[1]=5\nserial[2]=B\n",
     Defaults::on,
     {"parm_set 7 gain[1]=5", "parm_set_status 7 serial[2]=B", "parm_reset 7 gain[2] mode",
      "parm_reset_status 7 serial[1] status"}},
    {"defaults for the rest of a preset without status",
     "plain",
     "gain[1]=5\nstatus=1\n",
     Defaults::on,
     {"parm_set 7 gain[1]=5", "parm_set_status 7", "parm_reset 7 gain[2] mode",
      "parm_reset_status 7"}},
    {"a key twice with defaults",
     "plain",
     "mode=1\nmode=2\n",
     Defaults::on,
     {"parm_set 7 mode=1 mode=2", "parm_set_status 7", "parm_reset 7 gain[1] gain[2]",
      "parm_reset_status 7"}},
    {"defaults for nothing",
     "states",
     "status=1\n",
     Defaults::on,
     {"parm_set 7", "parm_set_status 7 status=1", "parm_reset 7", "parm_reset_status 7"}},
    {"an empty file with defaults",
     "scene",
     "",
     Defaults::on,
     {"parm_set 7", "parm_set_status 7", "parm_reset 7 gain[1] gain[2] mode",
      "parm_reset_status 7 serial[1] serial[2] status"}},
    {"a file of removed parameters with defaults",
     "states",
     "tone=1\n",
     Defaults::on,
     {"parm_set 7", "parm_set_status 7", "parm_reset 7", "parm_reset_status 7 status"}},
};

TEST_F(LoadPreset, SetsWhatTheFileHasForThePreset) {
    for (const auto& [why, preset, content, what, calls] : rows) {
        SCOPED_TRACE(why);
        handler_.calls.clear();
        EXPECT_TRUE(loadFile(content, preset, what));
        auto expected = calls;
        expected.insert(expected.begin(), "parm_start_trans");
        expected.emplace_back("parm_commit 7");
        EXPECT_EQ(handler_.calls, expected);
        EXPECT_EQ(test::takeLog(),
                  (Log{{LOG_INFO, std::string("loadPreset(): ") + preset + " preset loaded (" +
                                      (what == Defaults::on ? "with" : "without") +
                                      " defaults) from " + path_ + ".\n"}}));
        EXPECT_EQ(folder_.read("p"), content) << "the file stays as it is";
    }
}

TEST_F(LoadPreset, SucceedsWithAnEmptyFileAndChangesNothing) {
    for (const char* const content : {"", "\n# mode\nmode\n=5\ngain[1]=\n"}) {
        EXPECT_TRUE(loadFile(content));
        EXPECT_EQ(test::takeLog(), Log{empty(LOG_ERR)});
        EXPECT_TRUE(loadFile(content, "unknown")) << "the preset is not looked up";
        EXPECT_EQ(test::takeLog(), Log{empty(LOG_ERR)});
    }
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(LoadPreset, SucceedsWithAFileOfRemovedParametersAndChangesNothing) {
    EXPECT_TRUE(loadFile("tone=1\nnothing=2\n"));
    EXPECT_EQ(test::takeLog(), Log{empty(LOG_INFO)});
    EXPECT_EQ(handler_.calls, Calls{});
}

// A parameter of this device that the preset does not cover is not out of date.
TEST_F(LoadPreset, CommitsWhenOneEntryIsOfAParameterOfThisDevice) {
    for (const char* const content : {"other=1\n", "other=1\ntone=1\n", "tone=1\nother=1\n",
                                      "mode=1\nnothing=2\n", "other=1\nnothing=2\ntone=1\n"}) {
        SCOPED_TRACE(content);
        handler_.calls.clear();
        EXPECT_TRUE(loadFile(content));
        EXPECT_EQ(test::takeLog(), Log{loaded()});
        ASSERT_FALSE(handler_.calls.empty());
        EXPECT_EQ(handler_.calls.back(), "parm_commit 7");
    }
}

TEST_F(LoadPreset, RefusesAnUnknownPresetBeforeAnyCall) {
    for (const char* const preset : {"unknown", "nothing", ""}) {
        const test::LogRecord unknown{LOG_ERR,
                                      std::string("Unknown preset definition: ") + preset + "\n"};
        EXPECT_FALSE(loadFile("mode=1\n", preset));
        EXPECT_EQ(test::takeLog(), Log{unknown});
        EXPECT_FALSE(loadFile("tone=1\n", preset));
        EXPECT_EQ(test::takeLog(), Log{unknown});
        EXPECT_FALSE(loadFile("", preset, Defaults::on));
        EXPECT_EQ(test::takeLog(), Log{unknown});
        EXPECT_FALSE(defaults(preset));
        EXPECT_EQ(test::takeLog(), Log{unknown});
    }
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(LoadPreset, FailsSilentlyWithoutAConnection) {
    folder_.write("p", "mode=1\n");
    EXPECT_FALSE(loadPreset(nullptr, "scene", path_, manager_, Defaults::off));
    EXPECT_FALSE(loadPreset(nullptr, "scene", path_, manager_, Defaults::on));
    EXPECT_FALSE(loadDefaults(nullptr, "scene", manager_));
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(LoadPreset, FailsWithoutAFile) {
    EXPECT_FALSE(load());
    EXPECT_FALSE(load("scene", Defaults::on));
    EXPECT_FALSE(load("unknown"));
    EXPECT_EQ(test::takeLog(), (Log{unopened(), unopened(), unopened()}));
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(LoadPreset, FailsForWhatIsNoRegularFileWithoutWaiting) {
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_FALSE(load());
    ASSERT_EQ(std::remove(path_.c_str()), 0);
    ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
    EXPECT_FALSE(load());
    EXPECT_EQ(test::takeLog(), (Log{unopened(), unopened()}));
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(LoadPreset, FailsWhenTheFileCannotBeReadToItsEnd) {
    const auto operations = handler_.operations();
    const std::string path = "/proc/self/mem"; // a regular file without a first byte
    EXPECT_FALSE(loadPreset(&operations, "scene", path, manager_, Defaults::off));
    EXPECT_FALSE(loadPreset(&operations, "scene", path, manager_, Defaults::on));
    const test::LogRecord unread{LOG_ERR,
                                 "Error reading file: /proc/self/mem (Input/output error)\n"};
    EXPECT_EQ(test::takeLog(), (Log{unread, unread}));
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(LoadPreset, RestoresABackupFirst) {
    folder_.write("p", "mode=half wri");
    folder_.write("p_bak", "mode=old\n");
    EXPECT_TRUE(load());
    EXPECT_EQ(handler_.calls.at(1), "parm_set 7 mode=old");
    EXPECT_EQ(test::takeLog(), (Log{{LOG_INFO, "Backup preset file found.\n"}, loaded()}));
    EXPECT_EQ(folder_.read("p"), "mode=old\n");
    EXPECT_FALSE(folder_.exists("p_bak"));
}

TEST_F(LoadPreset, FailsWhenTheBackupCannotBePutBack) {
    folder_.write("p_bak", "mode=old\n");
    test::FileRecorder files;
    files.fail("rename p_bak p", EACCES);
    EXPECT_FALSE(load());
    EXPECT_EQ(test::takeLog(), (Log{{LOG_INFO, "Backup preset file found.\n"}, unopened()}));
    EXPECT_EQ(handler_.calls, Calls{});
}

TEST_F(LoadPreset, ChecksThatItCanSendBeforeItStarts) {
    handler_.refusesToSend = true;
    EXPECT_FALSE(loadFile("mode=1\ngain[1]=2\nstatus=3\n"));
    EXPECT_FALSE(load("scene", Defaults::on));
    EXPECT_FALSE(defaults("scene"));
    EXPECT_EQ(handler_.checks,
              (Calls{path_ + ": mode=1 gain[1]=2 status=3",
                     path_ + ": mode=1 gain[1]=2 status=3 gain[2] serial[1] serial[2]",
                     "scene: gain[1] gain[2] mode serial[1] serial[2] status"}));
    EXPECT_EQ(handler_.calls, Calls{});
    EXPECT_EQ(test::takeLog(), Log{}) << "who refuses says why";
}

struct BytesRow {
    const char* why;
    std::string content;
    const char* sent; ///< only this is checked
};

const BytesRow bytesRows[] = {
    {"in a value that is set", "mode=gr\xfcn\n", " mode=gr\xfcn"},
    {"in a name", "mode=1\nm\xf6\x64\x65=1\n", " mode=1"},
    {"in an index", "mode=1\ngain[\xff]=1\n", " mode=1"},
    {"in a value of no preset", "mode=1\nother=\x80\n", " mode=1"},
    {"in a removed parameter", "mode=1\ntone=\x80\n", " mode=1"},
    {"in an entry without an index mapping", "mode=1\ngain[1][\xff]=1\n", " mode=1"},
};

TEST_F(LoadPreset, LooksAtTheBytesOfWhatItSendsAlone) {
    for (const auto& [why, content, sent] : bytesRows) {
        SCOPED_TRACE(why);
        EXPECT_TRUE(loadFile(content));
        EXPECT_EQ(test::takeLog(), Log{loaded()});
        EXPECT_EQ(handler_.checks.back(), path_ + ":" + sent);
    }
}

TEST_F(LoadPreset, TakesEveryTextThatIsUtf8) {
    EXPECT_TRUE(loadFile("mode=\xc3\xa4\xe2\x82\xac\x1b\n"));
    EXPECT_EQ(handler_.calls.at(1), "parm_set 7 mode=\xc3\xa4\xe2\x82\xac\x1b");
}

TEST_F(LoadPreset, WritesTranslationErrorsToStandardErrorAndGoesOn) {
    bool done = false;
    EXPECT_EQ(test::standardErrorOf([&] { done = loadFile("gain[1][2]=3\nmode=1\n"); }),
              "PresetTranslate::translate() Error:Could not located index mapping for gain with 2 "
              "indices\n");
    EXPECT_TRUE(done);
    EXPECT_EQ(handler_.calls.at(1), "parm_set 7 mode=1");
    EXPECT_EQ(test::takeLog(), Log{loaded()});
}

TEST_F(LoadPreset, StartsATransactionForEntriesThatCannotBeReindexed) {
    bool done = false;
    test::standardErrorOf([&] { done = loadFile("gain[1][2]=3\n"); });
    EXPECT_TRUE(done);
    EXPECT_EQ(handler_.calls,
              (Calls{"parm_start_trans", "parm_set 7", "parm_set_status 7", "parm_commit 7"}));
}

TEST_F(LoadPreset, LoadsDefaults) {
    EXPECT_TRUE(defaults("scene"));
    EXPECT_EQ(handler_.calls,
              (Calls{"parm_start_trans", "parm_reset 7 gain[1] gain[2] mode",
                     "parm_reset_status 7 serial[1] serial[2] status", "parm_commit 7"}));
    EXPECT_EQ(test::takeLog(), (Log{{LOG_INFO, "loadDefaults(): scene defaults loaded.\n"}}));
}

// Each operation of a load with defaults, in order.
constexpr const char* operations[] = {"parm_start_trans", "parm_set",          "parm_set_status",
                                      "parm_reset",       "parm_reset_status", "parm_commit"};

TEST_F(LoadPreset, RetriesEachOperation) {
    for (const std::string operation : operations) {
        SCOPED_TRACE(operation);
        handler_.calls.clear();
        handler_.refusals = {{operation, 9}};
        EXPECT_TRUE(loadFile("mode=1\n", "scene", Defaults::on));
        EXPECT_EQ(handler_.calls.size(), 15U);
        EXPECT_EQ(test::takeLog(), test::attempts(operation, 9, {loaded("with defaults")}));
        EXPECT_EQ(test::takeSleeps(), std::vector<unsigned>(9, 1));
    }
}

TEST_F(LoadPreset, GivesUpWithoutCommittingOrEnding) {
    std::size_t before = 0;
    for (const std::string operation : operations) {
        SCOPED_TRACE(operation);
        handler_.calls.clear();
        handler_.refusals = {{operation, 10}};
        EXPECT_FALSE(loadFile("mode=1\n", "scene", Defaults::on));
        EXPECT_EQ(handler_.calls.size(), before++ + 10) << "nothing follows";
        EXPECT_TRUE(handler_.calls.back().starts_with(operation));
        EXPECT_EQ(test::takeLog(), test::attempts(operation, 10, {test::handlerLost}));
        EXPECT_EQ(test::takeSleeps(), std::vector<unsigned>(9, 1));
    }
}

TEST_F(LoadPreset, GivesUpOnDefaultsInTheSameWay) {
    for (const std::string operation :
         {"parm_start_trans", "parm_reset", "parm_reset_status", "parm_commit"}) {
        handler_.refusals = {{operation, 10}};
        EXPECT_FALSE(defaults("scene"));
        EXPECT_EQ(test::takeLog(), test::attempts(operation, 10, {test::handlerLost}));
    }
}

TEST_F(LoadPreset, CountsTheAttemptsOfEachOperationAnew) {
    handler_.refusals = {{"parm_set", 9}, {"parm_set_status", 9}};
    EXPECT_TRUE(loadFile("mode=1\n"));
    EXPECT_EQ(test::takeLog(),
              test::attempts("parm_set", 9, test::attempts("parm_set_status", 9, {loaded()})));
}

} // namespace
} // namespace morvane
