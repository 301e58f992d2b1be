// The test programs' main function: every test must close the files that it opens.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace {

/// By descriptor, the path of what is open. Without sockets and the like, some of which GLib keeps.
using OpenFiles = std::map<std::string, std::string>;

OpenFiles openFiles() {
    namespace fs = std::filesystem;
    OpenFiles files;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        const auto target = fs::read_symlink(entry.path());
        if (target.is_absolute() &&
            !target.string().starts_with("/proc/")) // such as the list itself
            files.emplace(entry.path().filename(), target);
    }
    return files;
}

class ClosesItsFiles : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo& /*test*/) override { before_ = openFiles(); }
    void OnTestEnd(const testing::TestInfo& /*test*/) override { EXPECT_EQ(openFiles(), before_); }

private:
    OpenFiles before_;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new ClosesItsFiles); // which owns it
    return RUN_ALL_TESTS();
}
