#include "paramhandler/string_list.h"
#include "support/log_recorder.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

#include <syslog.h>

#include <string>
#include <vector>

namespace {

int allocationsToFail = 0;
std::vector<gulong> pauses;

} // namespace

// The program's own definitions win over GLib's.
extern "C" {

gpointer g_try_malloc0_n(gsize count, gsize size) {
    if (allocationsToFail > 0) {
        --allocationsToFail;
        return nullptr;
    }
    return g_malloc0_n(count, size);
}

void g_usleep(gulong microseconds) {
    pauses.push_back(microseconds);
}
}

namespace morvane {
namespace {

TEST(StringList, PointsToItsTextsInOrderAndEndsWithNull) {
    const std::vector<std::string> texts{"b", "", "a"};
    StringList list(texts.size(), "");
    for (const auto& text : texts)
        list.add(text);
    EXPECT_EQ(list.size(), 3U);
    EXPECT_EQ(list.front(), texts[0].c_str()) << "not copied";
    EXPECT_EQ(list.array()[1], texts[1].c_str());
    EXPECT_EQ(list.array()[2], texts[2].c_str());
    EXPECT_EQ(list.array()[3], nullptr);
}

TEST(StringList, WaitsForMemoryAndLogsEachFailure) {
    allocationsToFail = 3;
    const StringList list(2, "parm_get_() getParm - out of memory\n");
    EXPECT_NE(list.array(), nullptr);
    EXPECT_EQ(test::takeLog(),
              std::vector<test::LogRecord>(3, {LOG_ERR, "parm_get_() getParm - out of memory\n"}));
    EXPECT_EQ(pauses, std::vector<gulong>(3, 500));
}

struct SizeRow {
    const char* why;
    std::vector<std::size_t> lengths;
    std::size_t size;
};

TEST(SendCheck, CountsTheBytesThatAnArrayTakesOnTheBus) {
    const SizeRow rows[] = {
        {"nothing", {}, 0},
        {"length, text and end", {5}, 4 + 5 + 1},
        {"no padding behind the last", {0}, 4 + 1},
        {"padding between two", {2, 2}, 4 + 3 + 1 + 4 + 3},
        {"no padding where none is needed", {3, 3}, 4 + 4 + 4 + 4},
    };
    for (const auto& [why, lengths, size] : rows) {
        SCOPED_TRACE(why);
        SendCheck check;
        for (const auto length : lengths)
            check.add(std::string(length, 'x'));
        EXPECT_EQ(check.sizeOnBus(), size);
    }
}

// libdbus is the judge of what it would send.
TEST(SendCheck, AgreesWithLibdbusAboutUtf8) {
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
        SendCheck check;
        check.add(text);
        const bool valid = dbus_validate_utf8(text.c_str(), nullptr) != FALSE;
        EXPECT_EQ(check.notUtf8(), valid ? std::nullopt : std::optional<std::string_view>(text))
            << testing::PrintToString(text);
    }
}

TEST(UnsendableReason, NamesTheFirstTextThatIsNotUtf8AndMakesItPrintable) {
    const std::string good = "good";
    const std::string first = "b\xff"
                              "d";
    const std::string second = "\xfe";
    SendCheck names;
    SendCheck values;
    names.add(good);
    values.add(good);
    values.add(first);
    values.add(second);
    EXPECT_EQ(unsendableReason({&names, &values}), "not valid UTF-8: b\\xffd");
    EXPECT_EQ(unsendableReason({&names}), "");
}

// Strings of 1 MiB without length, end and padding, so that the sizes below are whole.
void addMebibytes(SendCheck& check, const std::string& mebibyte, int count) {
    for (int i = 0; i < count; ++i)
        check.add(mebibyte);
}

TEST(UnsendableReason, KeepsToTheLimitsOfTheBus) {
    constexpr std::size_t mebibyteSize = 1U << 20U;
    const std::string mebibyte(mebibyteSize - 5, 'x');
    const std::string overByOne(mebibyteSize - 4, 'x');
    SendCheck full;
    addMebibytes(full, mebibyte, 63);
    full.add(mebibyte);
    EXPECT_EQ(full.sizeOnBus(), static_cast<std::size_t>(DBUS_MAXIMUM_ARRAY_LENGTH));
    EXPECT_EQ(unsendableReason({&full}), "");

    SendCheck tooLong;
    addMebibytes(tooLong, mebibyte, 63);
    tooLong.add(overByOne);
    EXPECT_EQ(tooLong.sizeOnBus(), static_cast<std::size_t>(DBUS_MAXIMUM_ARRAY_LENGTH) + 1);
    EXPECT_EQ(unsendableReason({&tooLong}), "more than the bus carries in one list");

    EXPECT_EQ(unsendableReason({&full, &full}), "more than the bus carries in one message");
    SendCheck almostFull;
    addMebibytes(almostFull, mebibyte, 63);
    EXPECT_EQ(unsendableReason({&full, &almostFull}), "");
}

} // namespace
} // namespace morvane
