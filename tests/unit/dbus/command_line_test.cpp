#include "dbus/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane {
namespace {

Arguments parse(std::vector<std::string> words) {
    words.insert(words.begin(), "morvane");
    std::vector<char*> argv;
    for (auto& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    Arguments arguments;
    parseCommandLine(static_cast<int>(words.size()), argv.data(), arguments);
    return arguments;
}

TEST(CommandLine, DaemonizesUnlessToldNotTo) {
    EXPECT_EQ(Arguments{}.daemonize, 1);
    EXPECT_EQ(parse({"p", "q"}).daemonize, 1);
    EXPECT_EQ(parse({"p", "q", "--debug"}).daemonize, 0);
    EXPECT_EQ(parse({"-d", "p", "q"}).daemonize, 0);
}

TEST(CommandLine, TakesTheTwoFileNamesFirst) {
    const auto arguments = parse({"params", "--debug", "presets"});
    EXPECT_EQ(arguments.paramDefFile, "params");
    EXPECT_EQ(arguments.presetDefFile, "presets");
    EXPECT_TRUE(arguments.systemArguments.empty());
}

TEST(CommandLine, TakesTheRestForSystemArguments) {
    const auto arguments = parse({"p", "q", "name=", "a=b=c", "=v", "x=1", "x=2", "name=late"});
    EXPECT_EQ(arguments.systemArguments,
              (SystemArguments{{"", "v"}, {"a", "b=c"}, {"name", ""}, {"x", "1"}}));
}

struct EndRow {
    const char* why;
    std::vector<std::string> words;
    int status;
    const char* standardError;
};

TEST(CommandLine, EndsTheProcessWithTheUsage) {
    constexpr int usageStatus = 64;
    const EndRow rows[] = {
        {"no file name", {}, usageStatus, "Usage: .* param_def_file preset_def_file system_arg"},
        {"one file name", {"p"}, usageStatus, "Usage: "},
        {"a system argument without =", {"p", "q", "a=1", "x"}, usageStatus, "Usage: "},
        {"an unknown option", {"p", "q", "--foreground"}, usageStatus, "unrecognized option"},
    };
    for (const auto& [why, words, status, standardError] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EXIT(parse(words), testing::ExitedWithCode(status), standardError);
    }
}

} // namespace
} // namespace morvane
