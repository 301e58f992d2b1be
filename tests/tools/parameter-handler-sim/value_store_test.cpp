#include "support/definition_text.h"
#include "value_store.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace morvane::sim {
namespace {

using Keys = std::vector<std::string>;
using Assignments = std::vector<Assignment>;

class ValueStoreTest : public testing::Test {
protected:
    // The value as a scope sees it, or why it cannot.
    std::string see(ValueStore::Scope scope, const std::string& key) {
        std::vector<std::string> values;
        if (const auto refusal = store_.get(scope, Keys{key}, values))
            return *refusal;
        return values.at(0);
    }

    Refusal set(ValueStore::Scope scope, const std::string& key, const std::string& value) {
        return store_.set(scope, Target::value, Assignments{{key, value}});
    }

    const Device device_{test::parametersOf("input index { rangeValid { 1..2 } }\n"
                                            "gain rw { index { input } rangeValid { -9..9 }\n"
                                            "  default { 1 } }\n"
                                            "state ro { rangeValid { 0..5 } default { 3 } }\n"
                                            "serial rostrict { default { \"A\" } }\n"
                                            "reboot wo { rangeValid { 0..1 } }\n"),
                         {}};
    ValueStore store_{device_};
};

TEST_F(ValueStoreTest, HandsOutANewTransactionEachTime) {
    EXPECT_EQ(store_.start(), 1U);
    EXPECT_EQ(store_.start(), 2U);
    EXPECT_EQ(store_.end(1), std::nullopt);
    EXPECT_EQ(store_.start(), 3U);
}

TEST_F(ValueStoreTest, ShowsWhatATransactionSetsToItselfAlone) {
    const auto mine = store_.start();
    const auto other = store_.start();
    EXPECT_EQ(set(mine, "gain[1]", "5"), std::nullopt);
    EXPECT_EQ(see(mine, "gain[1]"), "5");
    EXPECT_EQ(see(mine, "gain[2]"), "1");
    EXPECT_EQ(see(other, "gain[1]"), "1");
    EXPECT_EQ(see({}, "gain[1]"), "1");
}

TEST_F(ValueStoreTest, ShowsACommitToAll) {
    const auto mine = store_.start();
    const auto other = store_.start();
    EXPECT_EQ(set(mine, "gain[2]", "5"), std::nullopt);
    EXPECT_EQ(set(mine, "gain[1]", "6"), std::nullopt);
    EXPECT_EQ(store_.set(mine, Target::status, Assignments{{"state", "3"}}), std::nullopt);
    Keys changed;
    EXPECT_EQ(store_.commit(mine, changed), std::nullopt);
    EXPECT_EQ(changed, (Keys{"gain[1]", "gain[2]"})) << "sorted, without what stayed the same";
    EXPECT_EQ(see(other, "gain[1]"), "6");
    EXPECT_EQ(see({}, "gain[2]"), "5");

    changed.clear();
    EXPECT_EQ(store_.commit(mine, changed), std::nullopt) << "the transaction stays open";
    EXPECT_EQ(changed, Keys{});
}

TEST_F(ValueStoreTest, ForgetsWhatWasNotCommittedAtTheEnd) {
    const auto mine = store_.start();
    EXPECT_EQ(set(mine, "gain[1]", "5"), std::nullopt);
    EXPECT_EQ(store_.end(mine), std::nullopt);
    EXPECT_EQ(see({}, "gain[1]"), "1");
    EXPECT_EQ(see(mine, "gain[1]"), "unknown transaction 1");
}

TEST_F(ValueStoreTest, ActsAtOnceOutsideATransaction) {
    EXPECT_EQ(set({}, "gain[1]", "-9"), std::nullopt);
    EXPECT_EQ(see({}, "gain[1]"), "-9");
    EXPECT_EQ(store_.reset({}, Target::value, Keys{"gain[1]"}), std::nullopt);
    EXPECT_EQ(see({}, "gain[1]"), "1");
}

TEST_F(ValueStoreTest, ResetsInATransaction) {
    EXPECT_EQ(set({}, "gain[1]", "5"), std::nullopt);
    EXPECT_EQ(store_.set({}, Target::status, Assignments{{"state", "5"}}), std::nullopt);
    const auto mine = store_.start();
    EXPECT_EQ(store_.reset(mine, Target::value, Keys{"gain[1]", "gain[2]"}), std::nullopt);
    EXPECT_EQ(store_.reset(mine, Target::status, Keys{"state"}), std::nullopt);
    EXPECT_EQ(see(mine, "gain[1]"), "1");
    EXPECT_EQ(see({}, "gain[1]"), "5");
    Keys changed;
    EXPECT_EQ(store_.commit(mine, changed), std::nullopt);
    EXPECT_EQ(changed, (Keys{"gain[1]", "state"}));
    EXPECT_EQ(see({}, "state"), "3");
}

struct RefusedSetRow {
    Target target;
    Assignments assignments;
    const char* refusal;
};

const RefusedSetRow refusedSets[] = {
    {Target::value, {{"gain", "1"}}, "unknown parameter gain"},
    {Target::value, {{"gain[3]", "1"}}, "unknown parameter gain[3]"},
    {Target::status, {{"gone", "1"}}, "unknown parameter gone"},
    {Target::value, {{"gain[1]", "10"}}, "gain[1] cannot be set to \"10\""},
    {Target::value, {{"gain[1]", ""}}, "gain[1] cannot be set to \"\""},
    {Target::status, {{"state", "6"}}, "state cannot be set to \"6\""},
    {Target::value, {{"state", "1"}}, "state is read-only, only its status can be set"},
    {Target::value, {{"serial", "B"}}, "serial is read-only, only its status can be set"},
    {Target::status, {{"gain[1]", "1"}}, "gain[1] is not read-only and has no status"},
    {Target::status, {{"reboot", "1"}}, "reboot is not read-only and has no status"},
    {Target::value, {{"gain[1]", "5"}, {"gain[2]", "50"}}, "gain[2] cannot be set to \"50\""},
};

TEST_F(ValueStoreTest, RefusesSetsAndChangesNothing) {
    const auto mine = store_.start();
    for (const auto& [target, assignments, refusal] : refusedSets) {
        for (const ValueStore::Scope scope : {ValueStore::Scope(), ValueStore::Scope(mine)}) {
            EXPECT_EQ(store_.set(scope, target, assignments), refusal);
            EXPECT_EQ(see(scope, "gain[1]"), "1");
        }
    }
}

TEST_F(ValueStoreTest, RefusesResetsAndChangesNothing) {
    EXPECT_EQ(set({}, "gain[1]", "5"), std::nullopt);
    EXPECT_EQ(store_.reset({}, Target::value, Keys{"gain[1]", "x"}), "unknown parameter x");
    EXPECT_EQ(store_.reset({}, Target::value, Keys{"gain[1]", "state"}),
              "state is read-only, only its status can be set");
    EXPECT_EQ(store_.reset({}, Target::status, Keys{"gain[1]"}),
              "gain[1] is not read-only and has no status");
    EXPECT_EQ(see({}, "gain[1]"), "5");
}

TEST_F(ValueStoreTest, RefusesToReadCommandsAndUnknownKeys) {
    EXPECT_EQ(see({}, "reboot"), "reboot is write-only");
    EXPECT_EQ(see({}, "input"), "unknown parameter input");
    std::vector<std::string> values;
    EXPECT_EQ(store_.get({}, Keys{"gain[1]", "x"}, values), "unknown parameter x");
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(set({}, "reboot", "1"), std::nullopt) << "a command can be set";
}

TEST_F(ValueStoreTest, RefusesEverythingInAnUnknownTransaction) {
    constexpr const char* refusal = "unknown transaction 9";
    Keys changed;
    bool accepted = false;
    EXPECT_EQ(store_.end(9), refusal);
    EXPECT_EQ(store_.commit(9, changed), refusal);
    EXPECT_EQ(see(9, "gain[1]"), refusal);
    EXPECT_EQ(set(9, "gain[1]", "5"), refusal);
    EXPECT_EQ(store_.reset(9, Target::value, Keys{"gain[1]"}), refusal);
    EXPECT_EQ(store_.checkSet(9, {"gain[1]", "5"}, accepted), refusal);
}

struct CheckRow {
    Assignment assignment;
    bool accepted;
};

const CheckRow checkRows[] = {
    {{"gain[1]", "9"}, true},
    {{"gain[1]", "10"}, false},
    {{"state", "1"}, false},
    {{"reboot", "1"}, true},
};

TEST_F(ValueStoreTest, ChecksWithoutSetting) {
    for (const auto& [assignment, expected] : checkRows) {
        bool accepted = !expected;
        EXPECT_EQ(store_.checkSet({}, assignment, accepted), std::nullopt) << assignment.key;
        EXPECT_EQ(accepted, expected) << assignment.key << "=" << assignment.value;
    }
    bool accepted = false;
    EXPECT_EQ(store_.checkSet({}, {"x", "1"}, accepted), "unknown parameter x");
    EXPECT_EQ(see({}, "gain[1]"), "1");
}

} // namespace
} // namespace morvane::sim
