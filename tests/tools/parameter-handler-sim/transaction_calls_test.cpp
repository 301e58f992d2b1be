#include "glib/variant.h"
#include "support/definition_text.h"
#include "transaction_calls.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace morvane::sim {
namespace {

class TransactionCalls : public testing::Test {
protected:
    // Makes a call; the arguments are written as GVariant prints them. Returns the reply the same
    // way, with the changed keys after it, or the refusal.
    std::string call(const char* method, const char* arguments) {
        const OwnedVariant parameters(
            g_variant_parse(nullptr, arguments, nullptr, nullptr, nullptr));
        const auto outcome = perform(store_, method, parameters.get());
        if (outcome.refusal)
            return *outcome.refusal + (outcome.changed ? ", with a signal" : "");
        const OwnedVariant reply(g_variant_ref_sink(replyBody(outcome)));
        const OwnedText text(g_variant_print(reply.get(), TRUE));
        std::string changed;
        for (const auto& key : outcome.changed.value_or(std::vector<std::string>()))
            changed += " " + key;
        return text.get() + changed;
    }

    const Device device_{
        test::parametersOf("a rw { rangeValid { 0..9 } }\nb rw { }\nc ro { }\nd ro { }\n"), {}};
    ValueStore store_{device_};
};

struct Row {
    const char* method;
    const char* arguments;
    const char* reply;
};

// One after the other.
constexpr Row rows[] = {
    {"start", "()", "(uint32 1,)"},
    {"get", "(uint32 1, 'a')", "('0',)"},
    {"set", "(uint32 1, 'a', '5')", "()"},
    {"get", "(uint32 1, 'a')", "('5',)"},
    {"single_get", "('a',)", "('0',)"},
    {"set_bulk", "(uint32 1, ['a', 'b'], ['6', 'x'])", "()"},
    {"set_status", "(uint32 1, 'c', '1')", "()"},
    {"set_status_bulk", "(uint32 1, ['c', 'd'], ['2', '3'])", "()"},
    {"get_bulk", "(uint32 1, uint32 0, ['a', 'b', 'c', 'd'])", "(['6', 'x', '2', '3'],)"},
    {"single_get_bulk", "(uint32 0, ['a', 'b', 'c', 'd'])", "(['0', '0', '0', '0'],)"},
    {"commit", "(uint32 1,)", "() a b c d"},
    {"commit", "(uint32 1,)", "()"},
    {"reset", "(uint32 1, 'a')", "()"},
    {"reset_status", "(uint32 1, 'c')", "()"},
    {"commit", "(uint32 1,)", "() a c"},
    {"reset_bulk", "(uint32 1, ['a', 'b'])", "()"},
    {"reset_status_bulk", "(uint32 1, ['c', 'd'])", "()"},
    {"commit", "(uint32 1,)", "() b d"},
    {"check_set", "(uint32 1, 'a', '9')", "(true,)"},
    {"check_set", "(uint32 1, 'a', '10')", "(false,)"},
    {"end", "(uint32 1,)", "()"},
    {"end", "(uint32 1,)", "unknown transaction 1"},
    {"commit", "(uint32 1,)", "unknown transaction 1"},
    {"single_set", "('a', '7')", "()"},
    {"single_set_bulk", "(['a', 'b'], ['8', 'y'])", "()"},
    {"single_set_status", "('c', '4')", "()"},
    {"single_set_status_bulk", "(['c', 'd'], ['5', '6'])", "()"},
    {"single_get_bulk", "(uint32 0, ['a', 'b', 'c', 'd'])", "(['8', 'y', '5', '6'],)"},
    {"single_reset", "('a',)", "()"},
    {"single_reset_bulk", "(['a', 'b'],)", "()"},
    {"single_reset_status", "('c',)", "()"},
    {"single_reset_status_bulk", "(['c', 'd'],)", "()"},
    {"single_get_bulk", "(uint32 0, ['a', 'b', 'c', 'd'])", "(['0', '0', '0', '0'],)"},
    {"single_check_set", "('b', 'anything')", "(true,)"},
    {"single_get_bulk", "(uint32 0, @as [])", "(@as [],)"},
    {"single_set_bulk", "(['a', 'b'], ['1'])", "2 names with 1 values"},
    {"single_set", "('a', '10')", "a cannot be set to \"10\""},
    {"single_get", "('x',)", "unknown parameter x"},
};

TEST_F(TransactionCalls, CarryOutEveryMethod) {
    for (const auto& [method, arguments, reply] : rows)
        EXPECT_EQ(call(method, arguments), reply) << method << arguments;
}

TEST(TransactionMethods, AreKnownByName) {
    EXPECT_TRUE(isMethod("single_reset_status_bulk"));
    for (const char* const name : {"", "*", "Start", "get_blk", "single_start"})
        EXPECT_FALSE(isMethod(name)) << name;
}

} // namespace
} // namespace morvane::sim
