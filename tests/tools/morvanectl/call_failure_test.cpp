#include "call_failure.h"

#include <gtest/gtest.h>

namespace morvane::ctl {
namespace {

using Texts = std::vector<std::string>;

TEST(CallFailure, StatesWhatTheServiceSeesToo) {
    EXPECT_EQ(notesOfFile("/p", {"cannot read /p", "worse"}, 7, 7),
              (Texts{"cannot read /p", "worse"}));
    EXPECT_EQ(notesOfFile("/p", {}, 7, 7), Texts{});
}

TEST(CallFailure, MarksWhatAnotherUserMaySeeOtherwise) {
    EXPECT_EQ(notesOfFile("/p", {"cannot read /p", "worse"}, 7, 0),
              (Texts{"probably: cannot read /p, as you see it; the service runs as the user 0",
                     "probably: worse, as you see it; the service runs as the user 0"}));
    EXPECT_EQ(
        notesOfFile("/p", {"cannot read /p"}, 7, std::nullopt),
        Texts{"probably: cannot read /p, as you see it; the service runs as an unknown user"});
    EXPECT_EQ(notesOfFile("/p", {}, 7, 0),
              Texts{"the service runs as the user 0, who may have no access to /p"});
}

} // namespace
} // namespace morvane::ctl
