#include "block_lines.h"
#include "support/memory_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {
namespace {

class BlockLinesTest : public testing::Test {
protected:
    void read(const std::string& definitions) {
        const test::MemoryFile file(definitions);
        const OwnedStream stream(std::fopen(file.path().c_str(), "r"));
        while (text_.readLine(stream.get()))
            continue;
    }

    std::vector<std::uint32_t> linesOf(std::string_view name) const {
        const auto lines = blockLines(text_);
        const auto found = lines.find(name);
        return found == lines.end() ? std::vector<std::uint32_t>() : found->second;
    }

    SourceText text_;
};

using Numbers = std::vector<std::uint32_t>;

TEST_F(BlockLinesTest, ReachFromTheNameToTheEndOfTheBlock) {
    read("\ngain rw\n{\n# } not yet\n\n default { \"}\" } }\n\n# after it\nmode rw { }\n");
    EXPECT_EQ(linesOf("gain"), (Numbers{2, 3, 4, 5, 6}));
    EXPECT_EQ(linesOf("mode"), Numbers{9});
    EXPECT_EQ(linesOf("pan"), Numbers{});
}

TEST_F(BlockLinesTest, HaveAllBlocksOfAName) {
    read("gain rw { }\nmode rw { }\ngain ro {\n}\n");
    EXPECT_EQ(linesOf("gain"), (Numbers{1, 3, 4}));
}

TEST_F(BlockLinesTest, MayHaveSeveralNamesEach) {
    read("gain rw {\n} mode rw { } pan rw { } level\nro { }\n");
    EXPECT_EQ(linesOf("gain"), (Numbers{1, 2}));
    EXPECT_EQ(linesOf("mode"), Numbers{2});
    EXPECT_EQ(linesOf("pan"), Numbers{2});
    EXPECT_EQ(linesOf("level"), (Numbers{2, 3}));
}

TEST_F(BlockLinesTest, OfWriteOnlyParametersToo) {
    read("reset wo {\n default { 1 }\n ctrlValid (inputs > 2)\n}\n");
    EXPECT_EQ(linesOf("reset"), (Numbers{1, 2, 3, 4}));
}

TEST_F(BlockLinesTest, AreQuotedTogetherWhereTheyFollowEachOther) {
    read("gain rw {\r\n}\r\nmode rw { }\ngain ro { }");
    EXPECT_EQ(excerpts(text_, linesOf("gain")),
              (std::vector<Excerpt>{{1, "gain rw {\r\n}"}, {4, "gain ro { }"}}));
}

} // namespace
} // namespace morvane::ctl
