#include "paramdef/system_parameter.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace morvane {
namespace {

struct AccessRow {
    const char* keyword;
    std::optional<std::int32_t> code;
};

constexpr AccessRow accessRows[] = {{"index", 0},
                                    {"ro", 1},
                                    {"rostrict", 2},
                                    {"wo", 3},
                                    {"rw", 4},
                                    {"", std::nullopt},
                                    {"r", std::nullopt},
                                    {"rwx", std::nullopt},
                                    {"RW", std::nullopt},
                                    {"4", std::nullopt},
                                    {"ro ", std::nullopt}};

TEST(AccessTypeOf, KnowsFiveKeywords) {
    for (const auto& [keyword, code] : accessRows) {
        const auto access = accessTypeOf(keyword);
        EXPECT_EQ(access ? std::optional(static_cast<std::int32_t>(*access)) : std::nullopt, code)
            << keyword;
    }
}

TEST(SystemParameterTable, FindsExactNamesOnly) {
    SystemParameterTable table;
    table.insert("gain", 3);
    const auto* const gain = std::as_const(table).find("gain");
    ASSERT_NE(gain, nullptr);
    EXPECT_EQ(gain, table.find("gain"));
    EXPECT_EQ(gain->name, "gain");
    EXPECT_EQ(gain->line, 3U);
    for (const char* const name : {"", "gai", "gain ", "Gain", "gains"})
        EXPECT_EQ(table.find(name), nullptr) << name;
}

TEST(SystemParameterTable, KeepsTheFirstRecordOfAName) {
    SystemParameterTable table;
    table.insert("gain", 3);
    table.find("gain")->ctrlValid.emplace_back();
    table.insert("gain", 9);
    EXPECT_EQ(table.size(), 1U);
    EXPECT_EQ(table.find("gain")->line, 3U);
    EXPECT_EQ(table.find("gain")->ctrlValid.size(), 1U);
}

TEST(SystemParameterTable, KnowsTheRecordThatWasAskedForLast) {
    SystemParameterTable table;
    EXPECT_EQ(table.lastInserted(), nullptr);
    for (const char* const name : {"b", "a", "c", "b"}) {
        table.insert(name, 1);
        EXPECT_EQ(table.lastInserted(), table.find(name)) << name;
    }
    auto moved = std::move(table);
    EXPECT_EQ(moved.lastInserted(), moved.find("b"));
    moved = {};
    EXPECT_EQ(moved.lastInserted(), nullptr);
}

TEST(SystemParameterTable, IteratesInBytewiseOrder) {
    SystemParameterTable table;
    for (const char* const name : {"b", "\xff", "a", "B", "a1"})
        table.insert(name, 1);
    std::string names;
    for (const auto& [name, parameter] : table)
        names.append(name).append(" ");
    EXPECT_EQ(names, "B a a1 b \xff ");
}

TEST(SystemParameter, HasTheIndexThatNamesADimension) {
    SystemParameter parameter;
    EXPECT_FALSE(parameter.hasIndex("input"));
    parameter.indices = {{{{"input", 1, 1}, {"other", 1, 8}}}, {{{"band", 1, 20}}}};
    EXPECT_TRUE(parameter.hasIndex("input"));
    EXPECT_TRUE(parameter.hasIndex("band"));
    EXPECT_FALSE(parameter.hasIndex("other")) << "a further name of a dimension";
}

} // namespace
} // namespace morvane
