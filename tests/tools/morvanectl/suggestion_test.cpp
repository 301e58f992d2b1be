#include "suggestion.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace morvane::ctl {
namespace {

struct NearestRow {
    const char* why;
    std::string name;
    std::vector<std::string_view> candidates;
    std::string nearest;
};

const NearestRow rows[] = {
    {"nothing to choose from", "gain", {}, ""},
    {"a byte is missing", "gan", {"mute", "gain"}, "gain"},
    {"a byte too many", "gainn", {"mute", "gain"}, "gain"},
    {"another byte", "gaim", {"mute", "gain"}, "gain"},
    {"two bytes exchanged", "gian", {"mute", "gain"}, "gain"},
    {"two exchanges in a longer name", "uotputGian", {"outputGain"}, "outputGain"},
    {"too far away", "gian", {"pan"}, ""},
    {"the nearest", "outputGian", {"outputGang", "outputGain"}, "outputGain"},
    {"the first of the nearest", "gai", {"gain", "gais"}, "gain"},
    {"not the name itself", "gain", {"gain"}, ""},
    {"nothing in common", "a", {"b"}, ""},
    {"no name", "", {"a"}, ""},
    {"upper case", "Gain", {"gain"}, "gain"},
    {"a very long name", std::string(201, 'x'), {"x"}, ""},
};

TEST(Suggestion, IsTheNearestName) {
    for (const auto& [why, name, candidates, expected] : rows)
        EXPECT_EQ(nearest(name, candidates), expected) << why;
}

TEST(Suggestion, IsAQuestion) {
    const std::vector<std::string_view> names{"gain"};
    EXPECT_EQ(suggestion("gian", names), "did you mean gain?");
    EXPECT_EQ(suggestion("volume", names), "");
}

} // namespace
} // namespace morvane::ctl
