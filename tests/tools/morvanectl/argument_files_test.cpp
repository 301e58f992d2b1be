#include "argument_files.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {
namespace {

using Words = std::vector<std::string>;

struct WordsRow {
    const char* value;
    Words words;
};

const WordsRow wordsRows[] = {
    {"", {}},
    {" \t\r\n", {}},
    {"model=studio inputs=4", {"model=studio", "inputs=4"}},
    {"  a=1\t\tb=2\n", {"a=1", "b=2"}},
    {"name=\"two words\" x='single \"quotes\"'", {"name=two words", "x=single \"quotes\""}},
    {"a=1'2 3'4", {"a=12 34"}},
    {R"(a=\"b c=\ d e="\"" f='\'')", {"a=\"b", "c= d", "e=\"", "f='"}},
    {"'' a=1", {"", "a=1"}},
    {"a=\"open quote", {"a=open quote"}},
    {"a=1\\", {"a=1"}},
};

TEST(ArgumentFiles, SplitsAValueAsSystemdDoes) {
    for (const auto& [value, words] : wordsRows) {
        SCOPED_TRACE(value);
        EXPECT_EQ(commandLineWords(value), words);
    }
}

struct EnvironmentRow {
    const char* text;
    std::optional<std::string> value; ///< of A
};

const EnvironmentRow environmentRows[] = {
    {"", std::nullopt},
    {"A=1", "1"},
    {"A=", ""},
    {"# A=1\n;A=2\n  # A=3\nAB=4\nA\n", std::nullopt},
    {"A=1\nA=2\n", "2"},
    {"A = 1", "1"},
    {"  A=  one  two \t\r\nB=3", "one  two"},
    {"A=one 'two' \"three\" # four\n", "one 'two' \"three\" # four"},
    {"A=model=studio inputs=4", "model=studio inputs=4"},
    {R"(A=a\ b\\c\"d\ )", R"(a b\c"d )"},
    {"A=one\\\n two\nB=2\n", "one two"},
    {"A='it is \"so\"\nand \\so'  \nB=2", "it is \"so\"\nand \\so"},
    {R"(A="a \"b\" \\ \$ \` \x")", R"(a "b" \ $ ` \x)"},
    {"A=\"one\\\ntwo\nthree\"\n", "onetwo\nthree"},
    {"A=\"one\" 'two'\n", "onetwo"},
    {"A=\"open\nB=2", "open\nB=2"},
    {"B=\"\nA=1\n\"\n", std::nullopt},
    {"A=1\\", "1"},
};

TEST(ArgumentFiles, ReadsAnEnvironmentFileAsSystemdDoes) {
    for (const auto& [text, value] : environmentRows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(environmentValue(text, "A"), value);
    }
}

TEST(ArgumentFiles, ReadsNamedVariants) {
    std::vector<NamedVariant> variants;
    EXPECT_EQ(parseVariants("# the first line\n"
                            "\n"
                            "field-eu: variant=field region=eu\n"
                            "  studio-1.2:options=genlock,hdr text=\"two words\"\r\n"
                            "  # none\n"
                            "bare:\n"
                            "same: a=1 a=1",
                            variants),
              std::nullopt);
    EXPECT_EQ(variants, (std::vector<NamedVariant>{
                            {"field-eu", 3, {"variant=field", "region=eu"}},
                            {"studio-1.2", 4, {"options=genlock,hdr", "text=two words"}},
                            {"bare", 6, {}},
                            {"same", 7, {"a=1", "a=1"}}}));
}

struct ProblemRow {
    const char* text;
    VariantsProblem problem;
};

const ProblemRow problemRows[] = {
    {"a: b=1\nfield variant=field\n", {2, 0, "a line is \"NAME: argument argument ...\""}},
    {"  : a=1\n", {1, 2, "a line is \"NAME: argument argument ...\""}},
    {"field", {1, 0, "a line is \"NAME: argument argument ...\""}},
    {"a: b=1\n a: b=2\n", {2, 1, "there is a variant a already"}},
    {"a: b=1 inputs\n", {1, 0, "inputs is no argument, which is NAME=VALUE"}},
    {"a: b=1 c=2 b=3\n", {1, 0, "b=1 and b=3 give one name two values"}},
};

TEST(ArgumentFiles, SaysWhatIsWrongWithNamedVariants) {
    for (const auto& [text, problem] : problemRows) {
        SCOPED_TRACE(text);
        std::vector<NamedVariant> variants;
        EXPECT_EQ(parseVariants(text, variants), problem);
    }
}

} // namespace
} // namespace morvane::ctl
