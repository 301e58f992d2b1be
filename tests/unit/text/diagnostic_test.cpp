#include "support/output_capture.h"
#include "text/diagnostic.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

struct Row {
    const char* why;
    const char* line;
    std::uint32_t column;
    const char* output;
};

constexpr Row rows[] = {
    {"a line with its line feed", "a b\n", 2, "heading\na b\n  ^\n"},
    {"a line without one", "a b", 2, "heading\na b\n  ^\n"},
    {"the first column", "a\n", 0, "heading\na\n^\n"},
    {"a column beyond the line", "a\n", 4, "heading\na\n    ^\n"},
    {"an empty line", "", 0, "heading\n\n^\n"},
};

TEST(Diagnostic, PutsACaretUnderTheColumn) {
    for (const auto& [why, line, column, output] : rows) {
        SCOPED_TRACE(why);
        EXPECT_EQ(test::standardOutputOf([&, line = line, column = column] {
                      printWithCaret("heading\n", line, column);
                  }),
                  output);
    }
}

TEST(Diagnostic, WritesTextsAsTheyAre) {
    EXPECT_EQ(test::standardOutputOf([] { printAtOnce("%s no line feed"); }), "%s no line feed");
}

} // namespace
} // namespace morvane
