// The client of the Parameter Handler against the simulator on a private bus: which call each
// operation makes, and what it takes from the answer. Each test is a process of its own, because
// a process has only one connection to the session bus.

#include "glib/glib_owned.h"
#include "paramhandler/parameter_calls.h"
#include "paramhandler/transaction_client.h"
#include "support/log_recorder.h"
#include "support/received_strings.h"
#include "support/temp_folder.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <syslog.h>

#include <algorithm>
#include <array>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {
namespace {

using Log = std::vector<test::LogRecord>;
using Names = std::vector<std::string>;
using Keys = std::vector<CStringView>;
using Request = std::vector<KeyValue>;
using Borrowed = std::vector<CStringView>;

constexpr std::string_view parameters = "a rw { rangeValid { 0..9 } default { 1 } }\n"
                                        "b rw { rangeValid { 0..9 } default { 2 } }\n"
                                        "s ro { rangeValid { 0..9 } default { 3 } }\n"
                                        "t ro { rangeValid { 0..9 } default { 4 } }\n";

/// A private bus with the simulator on it, and a connection to it.
class ParameterCalls : public testing::Test {
protected:
    void SetUp() override {
        g_test_dbus_up(bus_.get());
        folder_.write("parameters", parameters);
    }

    // Starts the simulator with a script of faults and connects.
    void connect(const std::string& faults = "") {
        const auto log = folder_.path("log");
        const auto definitions = folder_.path("parameters");
        const auto script = folder_.write("faults", faults);
        const std::unique_ptr<GSubprocessLauncher, ReleasedBy<g_object_unref>> launcher(
            g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_STDOUT_PIPE));
        g_subprocess_launcher_set_stderr_file_path(launcher.get(), log.c_str());
        GError* error = nullptr;
        simulator_.reset(g_subprocess_launcher_spawn(
            launcher.get(), &error, SIMULATOR_PATH, definitions.c_str(), "--print-ready",
            "--verbose", "--faults", script.c_str(), nullptr));
        ASSERT_EQ(error, nullptr) << error->message;
        std::array<char, 6> ready{};
        gsize count = 0;
        g_input_stream_read_all(g_subprocess_get_stdout_pipe(simulator_.get()), ready.data(),
                                ready.size(), &count, nullptr, nullptr);
        ASSERT_EQ(std::string_view(ready.data(), count), "ready ");
        connection_ = connectParameterHandler();
        test::takeLog();
    }

    void TearDown() override {
        if (simulator_) {
            g_subprocess_force_exit(simulator_.get());
            g_subprocess_wait(simulator_.get(), nullptr, nullptr);
        }
        g_test_dbus_stop(bus_.get());
    }

    // The calls that the simulator saw since the last time, without the word "call".
    std::vector<std::string> takeCalls() {
        std::istringstream log(folder_.read("log"));
        std::vector<std::string> calls;
        std::size_t number = 0;
        constexpr std::string_view mark = "call ";
        for (std::string line; std::getline(log, line);) {
            if (line.starts_with(mark) && ++number > seen_)
                calls.push_back(line.substr(mark.size()));
        }
        seen_ = number;
        return calls;
    }

    std::string valueOf(const std::string& name) {
        ReceivedStrings values;
        EXPECT_TRUE(parm_get(connection_, nullptr, bulkGetOption, Keys{name}, values));
        takeCalls();
        return values.texts.empty() ? "" : values.texts.front();
    }

    guint32 startTransaction() {
        guint32 transaction = 0;
        EXPECT_TRUE(parm_start_trans(connection_, transaction));
        takeCalls();
        return transaction;
    }

    const test::TempFolder folder_;
    const std::unique_ptr<GTestDBus, ReleasedBy<g_object_unref>> bus_{
        g_test_dbus_new(G_TEST_DBUS_NONE)};
    std::unique_ptr<GSubprocess, ReleasedBy<g_object_unref>> simulator_;
    Connection connection_;
    std::size_t seen_ = 0;
};

struct CallRow {
    const char* why;
    std::function<bool(const Connection&, const guint32*)> operation;
    std::string inTransaction; ///< the call that is made in transaction 1
    std::string outside;       ///< the call that is made outside a transaction
};

const CallRow callRows[] = {
    {"set one",
     [](auto& connection, auto* id) {
         return parm_set(connection, id, Request{{"a", "5"}});
     },
     "set (uint32 1, 'a', '5')", "single_set ('a', '5')"},
    {"set several, in list order, equal names twice",
     [](auto& connection, auto* id) {
         return parm_set(connection, id, Request{{"b", "5"}, {"a", "6"}, {"b", "7"}});
     },
     "set_bulk (uint32 1, ['b', 'a', 'b'], ['5', '6', '7'])",
     "single_set_bulk (['b', 'a', 'b'], ['5', '6', '7'])"},
    {"set the status of one",
     [](auto& connection, auto* id) {
         return parm_set_status(connection, id, Request{{"s", "5"}});
     },
     "set_status (uint32 1, 's', '5')", "single_set_status ('s', '5')"},
    {"set the status of several",
     [](auto& connection, auto* id) {
         return parm_set_status(connection, id, Request{{"s", "5"}, {"t", "6"}});
     },
     "set_status_bulk (uint32 1, ['s', 't'], ['5', '6'])",
     "single_set_status_bulk (['s', 't'], ['5', '6'])"},
    {"reset one",
     [](auto& connection, auto* id) { return parm_reset(connection, id, Borrowed{"a"}); },
     "reset (uint32 1, 'a')", "single_reset ('a',)"},
    {"reset several",
     [](auto& connection, auto* id) {
         return parm_reset(connection, id, Borrowed{"a", "b"});
     },
     "reset_bulk (uint32 1, ['a', 'b'])", "single_reset_bulk (['a', 'b'],)"},
    {"reset the status of one",
     [](auto& connection, auto* id) { return parm_reset_status(connection, id, Borrowed{"s"}); },
     "reset_status (uint32 1, 's')", "single_reset_status ('s',)"},
    {"reset the status of several",
     [](auto& connection, auto* id) {
         return parm_reset_status(connection, id, Borrowed{"s", "t"});
     },
     "reset_status_bulk (uint32 1, ['s', 't'])", "single_reset_status_bulk (['s', 't'],)"},
    {"get one",
     [](auto& connection, auto* id) {
         ReceivedStrings values;
         return parm_get(connection, id, 7, Keys{"t"}, values) &&
                test::copied(values) == Names{"4"};
     },
     "get (uint32 1, 't')", "single_get ('t',)"},
    {"get several, with the option passed through",
     [](auto& connection, auto* id) {
         auto values = test::receivedStrings({"left over"});
         return parm_get(connection, id, 7, Keys{"t", "s"}, values) &&
                test::copied(values) == Names{"4", "3"};
     },
     "get_bulk (uint32 1, uint32 7, ['t', 's'])", "single_get_bulk (uint32 7, ['t', 's'])"},
    {"check a value that can be set",
     [](auto& connection, auto* id) {
         bool accepted = false;
         return parm_check_set(connection, id, "a", "9", accepted) && accepted;
     },
     "check_set (uint32 1, 'a', '9')", "single_check_set ('a', '9')"},
    {"check a value that cannot be set",
     [](auto& connection, auto* id) {
         bool accepted = true;
         return parm_check_set(connection, id, "a", "10", accepted) && !accepted;
     },
     "check_set (uint32 1, 'a', '10')", "single_check_set ('a', '10')"},
};

TEST_F(ParameterCalls, ChooseTheMethodByScopeAndCount) {
    connect();
    const guint32 transaction = startTransaction();
    for (const auto& [why, operation, inTransaction, outside] : callRows) {
        SCOPED_TRACE(why);
        EXPECT_TRUE(operation(connection_, &transaction));
        EXPECT_EQ(takeCalls(), Names{inTransaction});
        EXPECT_TRUE(operation(connection_, nullptr));
        EXPECT_EQ(takeCalls(), Names{outside});
    }
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(ParameterCalls, MakeNoCallForAnEmptyCollection) {
    connect();
    auto values = test::receivedStrings({"left over"});
    EXPECT_TRUE(parm_set(connection_, nullptr, {}));
    EXPECT_TRUE(parm_set_status(connection_, nullptr, {}));
    EXPECT_TRUE(parm_reset(connection_, nullptr, {}));
    EXPECT_TRUE(parm_reset_status(connection_, nullptr, {}));
    EXPECT_TRUE(parm_get(connection_, nullptr, bulkGetOption, {}, values));
    EXPECT_EQ(test::copied(values), Names{});
    EXPECT_EQ(takeCalls(), Names{});
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(ParameterCalls, FailSilentlyWithoutAProxy) {
    guint32 transaction = 1;
    ReceivedStrings values;
    bool accepted = false;
    EXPECT_FALSE(parm_start_trans({}, transaction));
    EXPECT_FALSE(parm_end_trans({}, transaction));
    EXPECT_FALSE(parm_set({}, nullptr, Request{{"a", "1"}}));
    EXPECT_FALSE(parm_set_status({}, nullptr, Request{{"s", "1"}}));
    EXPECT_FALSE(parm_reset({}, nullptr, Borrowed{"a"}));
    EXPECT_FALSE(parm_reset_status({}, nullptr, Borrowed{"s"}));
    EXPECT_FALSE(parm_get({}, nullptr, bulkGetOption, Keys{"a"}, values));
    EXPECT_FALSE(parm_check_set({}, nullptr, "a", "1", accepted));
    EXPECT_FALSE(parm_commit({}, transaction));
    EXPECT_FALSE(parm_commit_sync({}, transaction));
    EXPECT_FALSE(subscribe_transaction_signal(nullptr, nullptr, nullptr));
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(ParameterCalls, LogTheirFailureTextOnceWhenTheyAreRefused) {
    connect();
    const guint32 unknown = 9;
    auto values = test::receivedStrings({"kept"});
    bool accepted = true;
    const std::pair<std::function<bool()>, const char*> rows[] = {
        {[&] {
             return parm_set(connection_, &unknown, Request{{"a", "1"}});
         },
         "parm_set_() - set failed"},
        {[&] {
             return parm_set(connection_, &unknown, Request{{"a", "1"}, {"b", "1"}});
         },
         "parm_set_() - set failed"},
        {[&] {
             return parm_set_status(connection_, &unknown, Request{{"s", "1"}});
         },
         "parm_set_() - set failed"},
        {[&] { return parm_reset(connection_, &unknown, Borrowed{"a"}); },
         "parm_reset_() - reset failed"},
        {[&] {
             return parm_reset_status(connection_, &unknown, Borrowed{"s", "t"});
         },
         "parm_reset_() - reset failed"},
        {[&] { return parm_get(connection_, &unknown, bulkGetOption, Keys{"a"}, values); },
         "parm_get_() - get failed"},
        {[&] {
             return parm_get(connection_, &unknown, bulkGetOption, Keys{"a", "b"}, values);
         },
         "parm_get_() - bulk get failed"},
        {[&] { return parm_check_set(connection_, &unknown, "a", "1", accepted); },
         "parm_check_set_() - set failed"},
        {[&] { return parm_end_trans(connection_, unknown); }, "End transaction failed"},
    };
    for (const auto& [operation, text] : rows) {
        EXPECT_FALSE(operation());
        EXPECT_EQ(test::takeLog(),
                  (Log{{LOG_ERR, std::string("ERROR: ") + text +
                                     " (dbus_norvix_transaction: unknown transaction 9)\n"}}));
        EXPECT_EQ(takeCalls().size(), 1U);
    }
    EXPECT_EQ(test::copied(values), Names{"kept"});
    EXPECT_TRUE(accepted);
}

TEST_F(ParameterCalls, AreRepeatedAtOnceAfterATransportError) {
    connect("start 1-3 error lost\nsingle_set 1-2 error lost\n");
    guint32 transaction = 0;
    EXPECT_TRUE(parm_start_trans(connection_, transaction));
    EXPECT_EQ(transaction, 1U);
    EXPECT_EQ(test::takeLog(), Log(3, {LOG_ERR, "ERROR: Start transaction failed (lost)\n"}));
    EXPECT_TRUE(parm_set(connection_, nullptr, Request{{"a", "5"}}));
    EXPECT_EQ(test::takeLog(), Log(2, {LOG_ERR, "ERROR: parm_set_() - set failed (lost)\n"}));
    EXPECT_EQ(test::takeSleeps(), std::vector<unsigned>{});
    EXPECT_EQ(takeCalls().size(), 7U);
}

TEST_F(ParameterCalls, CommitAndEndInOneCallThatWaits) {
    connect();
    const guint32 transaction = startTransaction();
    EXPECT_TRUE(parm_set(connection_, &transaction, Request{{"a", "5"}}));
    takeCalls();
    EXPECT_TRUE(parm_commit_sync(connection_, transaction));
    EXPECT_EQ(takeCalls(), (Names{"commit (uint32 1,)", "end (uint32 1,)"}));
    EXPECT_EQ(valueOf("a"), "5");
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(ParameterCalls, EndAlsoWhenTheCommitThatWaitsFails) {
    connect("commit always error dbus_norvix_transaction: full\n"
            "end 2 error dbus_norvix_transaction: gone\n");
    const test::LogRecord commitFailed{LOG_ERR,
                                       "ERROR: parm_commit_sync() - commit transaction failed "
                                       "(dbus_norvix_transaction: full)\n"};
    EXPECT_FALSE(parm_commit_sync(connection_, startTransaction()));
    EXPECT_EQ(takeCalls(), (Names{"commit (uint32 1,)", "end (uint32 1,)"}));
    EXPECT_EQ(test::takeLog(), Log{commitFailed});
    EXPECT_FALSE(parm_commit_sync(connection_, startTransaction()));
    EXPECT_EQ(test::takeLog(),
              (Log{commitFailed,
                   {LOG_ERR, "ERROR: End transaction failed (dbus_norvix_transaction: gone)\n"}}));
}

TEST_F(ParameterCalls, FailTheCommitThatWaitsWhenOnlyTheEndFails) {
    connect("end 1 error dbus_norvix_transaction: gone\n");
    EXPECT_FALSE(parm_commit_sync(connection_, startTransaction()));
    EXPECT_EQ(test::takeLog(),
              (Log{{LOG_ERR, "ERROR: End transaction failed (dbus_norvix_transaction: gone)\n"}}));
}

// Runs the main loop until the simulator has seen `count` calls of "end".
void runUntilEnds(const std::function<std::vector<std::string>()>& takeCalls, int count,
                  std::vector<std::string>& calls) {
    const auto ends = [&] {
        return std::count_if(calls.begin(), calls.end(),
                             [](const std::string& call) { return call.starts_with("end "); });
    };
    while (ends() < count) {
        g_main_context_iteration(nullptr, TRUE);
        const auto more = takeCalls();
        calls.insert(calls.end(), more.begin(), more.end());
    }
}

TEST_F(ParameterCalls, CommitWithoutWaitingAndEndFromTheMainLoop) {
    connect();
    const guint32 transaction = startTransaction();
    EXPECT_TRUE(parm_set(connection_, &transaction, Request{{"a", "5"}}));
    takeCalls();
    EXPECT_TRUE(parm_commit(connection_, transaction));
    std::vector<std::string> calls;
    runUntilEnds([this] { return takeCalls(); }, 1, calls);
    EXPECT_EQ(calls, (Names{"commit (uint32 1,)", "end (uint32 1,)"}));
    EXPECT_EQ(valueOf("a"), "5");
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(ParameterCalls, LogACommitThatFailsLaterAndEndAllTheSame) {
    connect("commit 1 error dbus_norvix_transaction: full\ncommit 2 error lost\n");
    std::vector<std::string> calls;
    for (const char* const text : {"dbus_norvix_transaction: full", "lost"}) {
        calls.clear();
        EXPECT_TRUE(parm_commit(connection_, startTransaction()));
        runUntilEnds([this] { return takeCalls(); }, 1, calls);
        EXPECT_EQ(calls.size(), 2U) << "a failed commit is not repeated";
        EXPECT_EQ(test::takeLog(),
                  (Log{{LOG_ERR, std::string("ERROR: commitCallback() - commit transaction "
                                             "failed (") +
                                     text + ")\n"}}));
    }
}

TEST_F(ParameterCalls, ReceiveTheKeysThatACommitChanged) {
    connect();
    std::vector<std::string> heard;
    const TransactionHandler hear = [](DBusGProxy*, gchar** keys, gpointer userData) {
        static_cast<std::vector<std::string>*>(userData)->assign(keys, keys + g_strv_length(keys));
    };
    EXPECT_TRUE(subscribe_transaction_signal(connection_.proxy, hear, &heard));
    const guint32 transaction = startTransaction();
    EXPECT_TRUE(parm_set(connection_, &transaction, Request{{"b", "5"}, {"a", "6"}}));
    EXPECT_TRUE(parm_commit_sync(connection_, transaction));
    while (heard.empty())
        g_main_context_iteration(nullptr, TRUE);
    EXPECT_EQ(heard, (Names{"a", "b"}));
}

} // namespace
} // namespace morvane
