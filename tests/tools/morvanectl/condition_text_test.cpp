#include "condition_text.h"
#include "paramdef/param_def_file.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane::ctl {
namespace {

struct TextRow {
    const char* written; ///< between the parentheses of a condition
    const char* text;
};

const TextRow textRows[] = {
    {"a", "a"},
    {"  a  ", "a"},
    {"a-b", "a-b"},
    {"a==-5", "a==-5"},
    {"-  5 == a", "-  5 == a"},
    {"a<-1&&b>>2", "a<-1&&b>>2"},
    {"(a || b) && ((c))", "(a || b) && ((c))"},
    {"a == \"b ) c\"", "a == \"b ) c\""},
    {"0x10 % 010", "0x10 % 010"},
    {"a ==", "a =="},
    {"a\t&&\n      b\n", "a\t&& b"},
    {"\n\n  a ||\n# a comment )\n\nb", "a || b"},
    {"a == \"two\n  lines\"", "a == \"two lines\""},
};

TEST(ConditionText, IsWhatWasWrittenOnOneLine) {
    for (const auto& [written, text] : textRows) {
        SCOPED_TRACE(written);
        const test::TempFolder folder;
        folder.write("p", "first rw { }\nfan rw { ctrlValid (" + std::string(written) +
                              ") ctrlRO (other) }\n");
        SystemParameterTable parameters;
        ASSERT_EQ(readParamDefFile(folder.path("p").c_str(), &parameters), ParamDefResult::ok);
        const auto* const fan = parameters.find("fan");
        ASSERT_NE(fan, nullptr);
        EXPECT_EQ(textOf(fan->ctrlValid.at(0), parameters.text()), text);
    }
}

} // namespace
} // namespace morvane::ctl
