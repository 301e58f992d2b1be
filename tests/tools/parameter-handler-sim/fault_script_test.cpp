#include "fault_script.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

namespace morvane::sim {
namespace {

using Action = Fault::Action;

std::optional<std::string> read(FaultScript& script, const std::string& text) {
    std::istringstream stream(text);
    return script.read(stream, [](std::string_view name) { return name != "nothing"; });
}

struct ActionRow {
    const char* line;
    Action action;
    const char* text;
    std::optional<std::uint32_t> milliseconds;
};

const ActionRow actionRows[] = {
    {"get always error dbus_norvix_transaction: no such thing",
     Action::error,
     "dbus_norvix_transaction: no such thing",
     {}},
    {"get always delay 500", Action::delay, "", 500},
    {"get always no-reply", Action::noReply, "", {}},
    {"get always drop-name", Action::dropName, "", {}},
    {"get always drop-name 20", Action::dropName, "", 20},
    {"get always exit", Action::exit, "", {}},
    {"get always fewer-values", Action::fewerValues, "", {}},
    {"get always more-values", Action::moreValues, "", {}},
    {"get always wrong-type", Action::wrongType, "", {}},
    {"  get \t1   delay   7", Action::delay, "", 7},
};

TEST(FaultScript, KnowsEveryAction) {
    for (const auto& [line, action, text, milliseconds] : actionRows) {
        SCOPED_TRACE(line);
        FaultScript script;
        EXPECT_EQ(read(script, line), std::nullopt);
        const auto* const fault = script.next("get");
        ASSERT_NE(fault, nullptr);
        EXPECT_EQ(fault->action, action);
        EXPECT_EQ(fault->text, text);
        EXPECT_EQ(fault->milliseconds, milliseconds);
    }
}

struct WhenRow {
    const char* script;
    const char* calls;  ///< methods, a letter each
    const char* faults; ///< the text of the fault for each call, "-" for none
};

constexpr WhenRow whenRows[] = {
    {"", "aaa", "---"},
    {"a 1 error x", "aaa", "x--"},
    {"a 2 error x", "aaaa", "-x--"},
    {"a 2-3 error x", "aaaaa", "-xx--"},
    {"a 3-3 error x", "aaaa", "--x-"},
    {"a always error x", "aaba", "xx-x"},
    {"a 2 error x", "abba", "---x"},
    {"* 2 error x", "abba", "-x--"},
    {"* always error x", "ab", "xx"},
    {"a 1 error x\nb 1 error y\n* always error z", "abab", "xyzz"},
    {"* always error z\na always error x", "aa", "zz"},
    {"# a 1 error x\n\n \t\r\n  # b\na 2 error y\n", "aa", "-y"},
};

TEST(FaultScript, CountsTheCalls) {
    for (const auto& [text, calls, faults] : whenRows) {
        SCOPED_TRACE(text);
        FaultScript script;
        EXPECT_EQ(read(script, text), std::nullopt);
        std::string seen;
        for (const char method : std::string(calls)) {
            const auto* const fault = script.next({method});
            seen += fault == nullptr ? "-" : fault->text;
        }
        EXPECT_EQ(seen, faults);
    }
}

constexpr const char* mistakes[] = {
    "get",
    "get always",
    "get always explode",
    "get never exit",
    "get 0 exit",
    "get 3-2 exit",
    "get -1 exit",
    "get 1- exit",
    "get 1-2-3 exit",
    "get x exit",
    "get always exit now",
    "get always error",
    "get always delay",
    "get always delay soon",
    "get always delay -1",
    "get always delay 1 2",
    "get always drop-name soon",
    "get always no-reply 1",
};

TEST(FaultScript, SaysWhichLineIsWrong) {
    for (const char* const mistake : mistakes) {
        FaultScript script;
        EXPECT_EQ(read(script, "# one\nget 1 exit\n" + std::string(mistake) + "\nget 2 exit\n"),
                  "line 3 is no fault: " + std::string(mistake));
    }
}

TEST(FaultScript, SaysWhichMethodThereIsNot) {
    FaultScript script;
    EXPECT_EQ(read(script, "get 1 exit\n* 1 exit\nnothing 1 exit\n"),
              "line 3: there is no method nothing");
}

} // namespace
} // namespace morvane::sim
