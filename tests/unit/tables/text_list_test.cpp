#include "tables/text_list.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

namespace morvane {
namespace {

using Texts = std::vector<std::string>;

Texts textsOf(const TextList& list) {
    Texts texts;
    for (std::size_t place = 0; place < list.size(); ++place) {
        EXPECT_EQ(list[place].c_str()[list[place].view().size()], '\0');
        texts.emplace_back(list[place].view());
    }
    return texts;
}

TEST(TextList, KeepsTextsInTheirOrder) {
    const Texts texts{"b", "", std::string("a\0c", 3), "b", std::string(1000, 'x')};
    TextList list;
    EXPECT_TRUE(list.empty());
    for (const auto& text : texts)
        list.append(text);
    EXPECT_EQ(textsOf(list), texts);
    EXPECT_EQ(list.size(), texts.size());
    EXPECT_FALSE(list.empty());
}

struct SortedRow {
    const char* why;
    Texts texts;
    Texts listed;
};

const SortedRow sortedRows[] = {
    {"none", {}, {}},
    {"in order", {"a", "b", "c"}, {"a", "b", "c"}},
    {"not in order", {"c", "a", "b"}, {"a", "b", "c"}},
    {"in order with equal ones", {"a", "a", "b", "b"}, {"a", "b"}},
    {"equal ones apart", {"b", "a", "b", "a"}, {"a", "b"}},
    {"bytewise",
     {"\xc3\xa4", "b", "B", "gain[2]", "gain[10]"},
     {"B", "b", "gain[10]", "gain[2]", "\xc3\xa4"}},
};

TEST(TextList, AppendsTextsInBytewiseOrder) {
    for (const auto& [why, texts, listed] : sortedRows) {
        SCOPED_TRACE(why);
        TextList list;
        list.append("z");
        list.appendSorted(texts);
        auto expected = listed;
        expected.insert(expected.begin(), "z");
        EXPECT_EQ(textsOf(list), expected);
    }
}

TEST(TextList, FindsTheFirstTextThatIsNotLess) {
    TextList list;
    EXPECT_EQ(list.lowerBound("a"), 0U);
    list.appendSorted({"b", "d", "dd"});
    const std::vector<std::pair<const char*, std::size_t>> rows{
        {"", 0}, {"a", 0}, {"b", 0}, {"c", 1}, {"d", 1}, {"da", 2}, {"dd", 2}, {"de", 3}};
    for (const auto& [text, place] : rows)
        EXPECT_EQ(list.lowerBound(text), place) << text;
}

// The text is not read: there is no room for it.
TEST(TextList, HasNoRoomForMoreThan32BitsCanCount) {
    const char* const start = "x";
    TextList list;
    for (const auto* const text : {"", "some"}) {
        list.append(text);
        const auto size = list.size();
        for (const auto excess : {TextList::maximumBytes, TextList::maximumBytes - 1}) {
            EXPECT_THROW(list.append({start, excess}), std::bad_alloc);
            EXPECT_EQ(list.size(), size);
        }
    }
}

} // namespace
} // namespace morvane
