#include "paramhandler/send_check.h"
#include "support/log_recorder.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

#include <syslog.h>

#include <string>
#include <vector>

namespace morvane {
namespace {

using Log = std::vector<test::LogRecord>;
using Pairs = std::vector<KeyValue>;
using Keys = std::vector<CStringView>;

class IsSendable : public testing::Test {
protected:
    IsSendable() { test::takeLog(); }

    // The line that is logged; empty for a request that may be sent.
    static std::string refusal(const RequestTexts& texts) {
        const bool sendable = isSendable(texts);
        const auto log = test::takeLog();
        EXPECT_EQ(log.size(), sendable ? 0U : 1U) << testing::PrintToString(log);
        if (log.empty())
            return "";
        EXPECT_EQ(log.front().priority, LOG_ERR);
        return log.front().text;
    }
};

// libdbus decides what it would send.
TEST_F(IsSendable, AgreesWithLibdbusAboutUtf8) {
    const std::string texts[] = {
        "plain",
        "\xc3\xa4\xe2\x82\xac\xf0\x9f\x8e\x9b",
        "\xef\xbf\xbf",     // a noncharacter
        "\xc3",             // cut off
        "\xff",             // never a first byte
        "a\xc3\xa4\x80",    // a continuation byte too many
        "\xc0\xaf",         // longer than it needs to be
        "\xed\xa0\x80",     // a surrogate
        "\xf4\x90\x80\x80", // beyond the last character
    };
    for (const auto& text : texts) {
        const bool valid = dbus_validate_utf8(text.c_str(), nullptr) != FALSE;
        EXPECT_EQ(refusal({.origin = "p", .get = Keys{text}}).empty(), valid)
            << testing::PrintToString(text);
    }
}

TEST_F(IsSendable, NamesTheFirstTextThatIsNotUtf8) {
    const std::string bad = "b\xff\n";
    const Keys oneName{bad};
    const Keys names{"good", bad, "\xfe"};
    const Pairs badValue{{"good", "1"}, {"mode", bad}, {"\xfe", "1"}};
    const Pairs badKey{{bad, "\xfe"}};
    const Keys keys{"good", bad};
    const struct {
        RequestTexts texts;
        const char* line;
    } rows[] = {
        {{.origin = "scene", .get = oneName},
         "ERROR: parm_get_() - get failed (scene: key of b\\xff\\x0a is not valid UTF-8)\n"},
        {{.origin = "scene", .get = names},
         "ERROR: parm_get_() - bulk get failed (scene: key of b\\xff\\x0a is not valid UTF-8)\n"},
        {{.origin = "/p", .set = badValue},
         "ERROR: parm_set_() - set failed (/p: value of mode is not valid UTF-8)\n"},
        {{.origin = "/p", .set = badKey},
         "ERROR: parm_set_() - set failed (/p: key of b\\xff\\x0a is not valid UTF-8)\n"},
        {{.origin = "/p", .setStatus = badValue},
         "ERROR: parm_set_() - set failed (/p: value of mode is not valid UTF-8)\n"},
        {{.origin = "/p", .reset = keys},
         "ERROR: parm_reset_() - reset failed (/p: key of b\\xff\\x0a is not valid UTF-8)\n"},
        {{.origin = "/p", .resetStatus = keys},
         "ERROR: parm_reset_() - reset failed (/p: key of b\\xff\\x0a is not valid UTF-8)\n"},
        {{.origin = "/p", .set = badValue, .reset = keys},
         "ERROR: parm_set_() - set failed (/p: value of mode is not valid UTF-8)\n"},
    };
    for (const auto& [texts, line] : rows)
        EXPECT_EQ(refusal(texts), line);
}

// Only a key set knows that, and only of keys.
TEST_F(IsSendable, ChecksNoKeysThatAreKnownToBeUtf8) {
    const std::string bad = "b\xff";
    const Keys keys{bad};
    const Pairs badKey{{bad, "1"}};
    const Pairs badValue{{"mode", bad}};
    EXPECT_EQ(refusal({.origin = "p", .keysAreUtf8 = true, .get = keys, .reset = keys}), "");
    EXPECT_EQ(refusal({.origin = "p", .keysAreUtf8 = true, .set = badKey}), "");
    EXPECT_EQ(refusal({.origin = "/p", .keysAreUtf8 = true, .set = badValue}),
              "ERROR: parm_set_() - set failed (/p: value of mode is not valid UTF-8)\n");
}

constexpr std::size_t mebibyte = 1U << 20U;

// A string of 1 MiB with its length and its end, so that the sizes below are whole.
const std::string mebibyteOnBus(mebibyte - 5, 'x');

// As many as fit, and one byte more.
TEST_F(IsSendable, KeepsToTheLimitOfAList) {
    const std::string overByOne(mebibyte - 4, 'x');
    Keys names(64, mebibyteOnBus);
    EXPECT_EQ(refusal({.origin = "scene", .get = names}), "");
    names.back() = overByOne;
    EXPECT_EQ(refusal({.origin = "scene", .get = names}),
              "ERROR: parm_get_() - bulk get failed (scene: 67108865 bytes are more than a message "
              "holds)\n");
    Pairs values(64, {"k", mebibyteOnBus});
    EXPECT_EQ(refusal({.origin = "/p", .set = values}), "");
    values.back().second = overByOne;
    EXPECT_EQ(
        refusal({.origin = "/p", .set = values}),
        "ERROR: parm_set_() - set failed (/p: 67108865 bytes are more than a message holds)\n");
    Keys keys(64, mebibyteOnBus);
    EXPECT_EQ(refusal({.origin = "/p", .reset = keys}), "");
    keys.back() = overByOne;
    EXPECT_EQ(refusal({.origin = "/p", .resetStatus = keys}),
              "ERROR: parm_reset_() - reset failed (/p: 67108865 bytes are more than a message "
              "holds)\n");
}

// Two full lists would fill a message, which also has a header.
TEST_F(IsSendable, KeepsToTheLimitOfAMessage) {
    Pairs values(64, {mebibyteOnBus, mebibyteOnBus});
    EXPECT_EQ(refusal({.origin = "/p", .set = values}),
              "ERROR: parm_set_() - set failed (/p: 134221824 bytes are more than a message "
              "holds)\n");
    const std::string overByOne(mebibyte - 5 - 4095, 'x');
    values.back().second = overByOne;
    EXPECT_EQ(refusal({.origin = "/p", .set = values}),
              "ERROR: parm_set_() - set failed (/p: 134217729 bytes are more than a message "
              "holds)\n");
    const std::string shorter(mebibyte - 5 - 4096, 'x');
    values.back().second = shorter;
    EXPECT_EQ(refusal({.origin = "/p", .set = values}), "");
    EXPECT_EQ(refusal({.origin = "/p", .set = values, .setStatus = values}), "")
        << "which are two messages";
}

} // namespace
} // namespace morvane
