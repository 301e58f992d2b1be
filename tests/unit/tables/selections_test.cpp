#include "support/definition_text.h"
#include "tables/selections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace morvane {
namespace {

const IndexTable indices{{"a", {"0", "1", "2"}}, {"b", {"x", "y"}}, {"e", {}}};

const ParameterMap candidates{
    {"s", {"a"}}, {"t", {"a", "b"}}, {"v", {}}, {"w", {"gone"}}, {"z", {"e"}},
};

// "*" for a dimension that takes all the values of its index, else the values in order.
std::string textOf(const ChosenValues* chosen) {
    if (chosen == nullptr)
        return "[*]";
    auto values = chosen->list();
    std::sort(values.begin(), values.end());
    std::string text;
    for (const auto& value : values)
        text += (text.empty() ? "" : " ") + value;
    return "[" + text + "]";
}

// Such as "s[0 1], t[*][x]".
std::string textOf(const Selections& selections) {
    std::string text;
    const auto add = [&](std::size_t place, std::span<const Selection> selected) {
        for (const auto& selection : selected) {
            text += (text.empty() ? "" : ", ") + std::string(candidates.name(place));
            for (const auto* const chosen : selection)
                text += textOf(chosen);
        }
    };
    for (std::size_t place = 0; place < candidates.size(); ++place) {
        add(place, selections.ofGroup(candidates.group(place)));
        add(place, selections.ofItem(place));
    }
    return text;
}

struct ListRow {
    const char* why;
    std::string items;
    const char* selected;
};

const ListRow listRows[] = {
    {"a parameter without index", "v", "v"},
    {"a parameter with indices", "t", "t[*][*]"},
    {"a parameter that is no candidate", "q, s", "s[*]"},
    {"a parameter twice", "s, s { index { a {1} } }", "s[*], s[1]"},

    {"an item's index without values", "t { index { b } }", "t[*][x y]"},
    {"an item's index with values", "t { index { a {1, 99} } }", "t[1 99][*]"},
    {"an item's indices in any order", "t { index { b {y}, a {0..1} } }", "t[0 1][y]"},
    {"an item's index without some values", "t { index { not a {1} } }", "t[0 2][*]"},
    {"an item's clauses one by one", "t { index { a {1} } index { b {x} } }", "t[1][*], t[*][x]"},
    {"an item whose own index must be absent", "s { index { not a } }", ""},
    {"an item without a value left", "t { index { b, not a {0..2} } }", ""},
    {"\"none\" for an item without index", "v { index { none } }", "v"},
    {"\"none\" for an item with index", "s { index { none } }", ""},
    {"of two selectors for one index the last counts", "s { index { a {1}, a {2} } }", "s[2]"},
    {"likewise with \"not\" on the first", "s { index { not a {1}, a {2} } }", "s[2]"},
    {"likewise with \"not\" on the last", "s { index { a {1}, not a {2} } }", "s[0 1]"},
    {"a selector and its absence", "s { index { a {1}, not a } }", ""},

    {"\"none\" for all candidates", "index { none }", "v"},
    {"an index for all candidates", "index { a }", "s[0 1 2], t[0 1 2][*]"},
    {"two indices for all candidates", "index { b {x}, a }", "t[0 1 2][x]"},
    {"the absence of an index", "index { not a }", "v, w[*], z[*]"},
    {"the absence of several indices", "index { not a, not gone, not e }", "v"},
    {"an index and the absence of another", "index { a, not b }", "s[0 1 2]"},
    {"values for all candidates", "index { a {7} }", "s[7], t[7][*]"},
    {"all candidates without some values", "index { not b {y} }", "t[*][x]"},
    {"all candidates without a value left", "index { not b {x, y} }", ""},
    {"an index that no candidate has", "index { c }", ""},
    {"the absence of an index that no candidate has", "index { not c, none1 }", ""},

    {"a list's clauses come before its items", "t { index { b {x} } }, index { a {0} }",
     "s[0], t[0][*], t[*][x]"},

    {"all values of an index that does not exist", "index { gone }", ""},
    {"some values of an index that does not exist", "index { not gone {1} }", ""},
    {"all values of an index without values", "index { e }", ""},
    {"values that an index does not have", "index { e {1} }", "z[1]"},
};

TEST(Selections, HoldWhatAListSelects) {
    for (const auto& [why, items, selected] : listRows) {
        SCOPED_TRACE(why);
        const auto definitions =
            test::presetDefinitionsOf("p preset { include ro { " + items + " } }");
        Selections selections(indices, candidates);
        selections.add(definitions.presets.at(0).includeLists.at(0));
        EXPECT_EQ(textOf(selections), selected);
    }
}

TEST(Selections, AddListAfterList) {
    const auto definitions = test::presetDefinitionsOf(
        "p preset { exclude rw { s, v } exclude rw { s { index { a {1} } } } }");
    Selections selections(indices, candidates);
    EXPECT_EQ(textOf(selections), "");
    for (const auto& list : definitions.presets.at(0).excludeLists)
        selections.add(list);
    EXPECT_EQ(textOf(selections), "s[*], s[1], v");
}

} // namespace
} // namespace morvane
