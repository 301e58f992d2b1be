#include "output.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <streambuf>
#include <string>

namespace morvane::ctl {
namespace {

/// Takes three bytes, and fails then: first with "no space left on device".
class SmallDevice : public std::streambuf {
public:
    explicit SmallDevice(std::string& written) : written_(written) {}

protected:
    int_type overflow(int_type byte) override {
        constexpr std::size_t most = 3;
        if (written_.size() == most) {
            errno = hasFailed_ ? EIO : ENOSPC;
            hasFailed_ = true;
            return traits_type::eof();
        }
        written_ += traits_type::to_char_type(byte);
        return byte;
    }

private:
    std::string& written_;
    bool hasFailed_ = false;
};

/// Stands in for what std::cout writes to.
class StandardOutputTest : public testing::Test {
protected:
    void TearDown() override {
        std::cout.rdbuf(before_);
        std::cout.clear();
    }

    std::string written_;
    SmallDevice device_{written_};
    std::streambuf* before_ = std::cout.rdbuf(&device_);
};

TEST_F(StandardOutputTest, RemembersTheFirstErrorWhateverFailsAfterIt) {
    StandardOutput output;
    std::cout << "abc";
    EXPECT_EQ(output.error(), 0);
    std::cout << 'd';
    EXPECT_FALSE(std::cout.good());
    std::cout.clear();
    std::cout << "e";
    errno = EAGAIN;
    EXPECT_EQ(output.error(), ENOSPC);
    EXPECT_EQ(written_, "abc");
}

TEST_F(StandardOutputTest, WritesNothingOnceItDiscards) {
    StandardOutput output;
    std::cout << "abcd";
    output.discard();
    std::cout << "e" << 'f' << std::flush;
    EXPECT_EQ(output.error(), 0);
    EXPECT_TRUE(std::cout.good());
    EXPECT_EQ(written_, "abc");
}

TEST_F(StandardOutputTest, LeavesTheStreamAsItWas) {
    {
        StandardOutput output;
        EXPECT_NE(std::cout.rdbuf(), &device_);
    }
    EXPECT_EQ(std::cout.rdbuf(), &device_);
}

} // namespace
} // namespace morvane::ctl
