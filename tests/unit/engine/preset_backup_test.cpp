#include "support/file_recorder.h"
#include "unit/engine/preset_backup_fixture.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace morvane {
namespace {

TEST_F(PresetBackup, StoresInAnOrderThatAPowerCutCannotHurt) {
    folder_.write("p", "old");
    test::FileRecorder files;
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(files.calls(),
              (std::vector<std::string>{"rename p p_bak", "fsync " + folderName_, "open p",
                                        "fsync p", "fclose p", "fsync " + folderName_,
                                        "remove p_bak", "fsync " + folderName_}));
    EXPECT_EQ(folder_.read("p"), "new");
    EXPECT_FALSE(folder_.exists("p_bak"));
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(PresetBackup, StoresAFileThatWasNotThere) {
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(folder_.read("p"), "new");
    EXPECT_FALSE(folder_.exists("p_bak"));
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(PresetBackup, StoresAFileWithoutAFolderInItsPath) {
    std::array<char, 4096> before{};
    ASSERT_NE(getcwd(before.data(), before.size()), nullptr);
    ASSERT_EQ(chdir(folder_.path(".").c_str()), 0);
    std::FILE* stream = nullptr;
    test::FileRecorder files;
    EXPECT_TRUE(openPresetForWrite("p", stream));
    EXPECT_TRUE(closePresetAfterWrite("p", stream));
    ASSERT_EQ(chdir(before.data()), 0);
    EXPECT_TRUE(folder_.exists("p"));
    EXPECT_EQ(files.calls().at(1), "fsync " + folderName_);
}

// As the recorder sees it: empty, but under qemu the name of the folder that stands in for it.
std::string nameOfRootFolder() {
    const int root = open("/", O_PATH | O_CLOEXEC);
    auto name = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(root)).filename();
    close(root);
    return name.string();
}

// Everything that would change the root folder fails.
TEST_F(PresetBackup, SyncsTheRootFolderForAFileInIt) {
    test::FileRecorder files;
    files.fail("rename morvane-test morvane-test_bak", ENOENT);
    files.fail("fsync " + nameOfRootFolder(), EINVAL);
    files.fail("open morvane-test", EROFS);
    std::FILE* stream = nullptr;
    EXPECT_TRUE(openPresetForWrite("/morvane-test", stream));
    EXPECT_EQ(files.calls(),
              (std::vector<std::string>{"rename morvane-test morvane-test_bak",
                                        "fsync " + nameOfRootFolder(), "open morvane-test"}));
}

TEST_F(PresetBackup, ReplacesAStaleBackup) {
    folder_.write("p", "current");
    folder_.write("p_bak", "stale");
    std::FILE* stream = nullptr;
    EXPECT_TRUE(openPresetForWrite(path_, stream));
    EXPECT_EQ(folder_.read("p_bak"), "current");
    EXPECT_TRUE(closePresetAfterWrite(path_, stream));
    EXPECT_FALSE(folder_.exists("p_bak"));
}

TEST_F(PresetBackup, KeepsABackupWithoutAFileUntilTheNewFileIsComplete) {
    folder_.write("p_bak", "only copy");
    std::FILE* stream = nullptr;
    EXPECT_TRUE(openPresetForWrite(path_, stream));
    EXPECT_EQ(folder_.read("p_bak"), "only copy");
    EXPECT_TRUE(closePresetAfterWrite(path_, stream));
    EXPECT_FALSE(folder_.exists("p_bak"));
}

TEST_F(PresetBackup, FailsWhenTheBackupCannotBeMade) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("rename p p_bak", EACCES);
    std::FILE* stream = stderr;
    EXPECT_FALSE(openPresetForWrite(path_, stream));
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(folder_.read("p"), "old");
    EXPECT_EQ(test::takeLog(), Log{renameError()});
}

TEST_F(PresetBackup, FailsWhenTheRenamingDoesNotReachTheDisk) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("fsync " + folderName_, EIO);
    EXPECT_FALSE(store("new"));
    EXPECT_EQ(test::takeLog(), Log{renameError()});
    EXPECT_EQ(load(), "old");
}

TEST_F(PresetBackup, SucceedsWithoutAStreamWhenTheFileCannotBeCreated) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("open p", EACCES);
    std::FILE* stream = stderr;
    EXPECT_TRUE(openPresetForWrite(path_, stream));
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(test::takeLog(), Log{});
    EXPECT_EQ(load(), "old");
}

struct KeepFailure {
    const char* call;
    int error;
    int count;
};

// The old file comes back, whichever way the new one is lost.
TEST_F(PresetBackup, PutsTheOldFileBackWhenTheNewOneCannotBeKept) {
    const auto syncFolder = "fsync " + folderName_;
    for (const auto& [call, error, count] :
         {KeepFailure{"fsync p", EIO, 0}, KeepFailure{"fsync p", ENOSPC, 0},
          KeepFailure{"fclose p", EIO, 0}, KeepFailure{syncFolder.c_str(), EIO, 1},
          KeepFailure{syncFolder.c_str(), ENOSPC, 1}, KeepFailure{syncFolder.c_str(), EDQUOT, 1}}) {
        SCOPED_TRACE(call);
        folder_.write("p", "old");
        {
            test::FileRecorder files;
            files.fail(call, error, count);
            EXPECT_FALSE(store("new"));
            EXPECT_EQ(files.calls().back(), "fsync " + folderName_) << "and it stays back";
        }
        EXPECT_EQ(test::takeLog(), Log{writeError()});
        EXPECT_EQ(folder_.read("p"), "old");
        EXPECT_FALSE(folder_.exists("p_bak"));
    }
}

TEST_F(PresetBackup, RemovesTheHalfWrittenFileWhenThereIsNoOldOne) {
    test::FileRecorder files;
    files.fail("fsync p", EIO);
    EXPECT_FALSE(store("new"));
    EXPECT_EQ(test::takeLog(), Log{writeError()});
    EXPECT_FALSE(folder_.exists("p"));
    EXPECT_FALSE(folder_.exists("p_bak"));
}

// Lets no file grow beyond so many bytes, as a full disk would.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, SIG_DFL);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
};

// A small file fails when its buffer is flushed at the end, a large one while it is written.
TEST_F(PresetBackup, KeepsTheOldFileWhenTheDiskIsFull) {
    for (const std::size_t size : {100U, 1'000'000U}) {
        SCOPED_TRACE(size);
        folder_.write("p", "old");
        bool stored = true;
        {
            const FileSizeLimit limit(10);
            stored = store(std::string(size, 'x'));
        }
        EXPECT_FALSE(stored);
        EXPECT_EQ(test::takeLog(), Log{writeError()});
        EXPECT_EQ(folder_.read("p"), "old");
        EXPECT_FALSE(folder_.exists("p_bak"));
    }
}

// The half-written file of an interrupted store has become the backup by then.
TEST_F(PresetBackup, PutsBackWhatAnInterruptedStoreLeftWhenTheNextOneFails) {
    folder_.write("p", "half");
    folder_.write("p_bak", "complete");
    test::FileRecorder files;
    files.fail("fsync p", EIO);
    EXPECT_FALSE(store("new"));
    EXPECT_EQ(load(), "half");
    EXPECT_FALSE(folder_.exists("p_bak"));
    EXPECT_EQ(test::takeLog(), Log{writeError()});
}

TEST_F(PresetBackup, ToleratesAFolderThatCannotBeSynced) {
    for (const int error : {EINVAL, EROFS, ENOTSUP}) {
        folder_.write("p", "old");
        test::FileRecorder files;
        for (int count = 0; count < 3; ++count)
            files.fail("fsync " + folderName_, error);
        EXPECT_TRUE(store("new")) << error;
        EXPECT_EQ(test::takeLog(), Log{});
    }
}

TEST_F(PresetBackup, FailsWhenTheBackupCannotBeRemoved) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("remove p_bak", EACCES);
    EXPECT_FALSE(store("new"));
    EXPECT_EQ(test::takeLog(), Log{removeError()});
    EXPECT_EQ(folder_.read("p"), "new");
}

TEST_F(PresetBackup, FailsWhenTheRemovalDoesNotReachTheDisk) {
    folder_.write("p", "old");
    test::FileRecorder files;
    files.fail("fsync " + folderName_, EIO, 2);
    EXPECT_FALSE(store("new"));
    EXPECT_EQ(test::takeLog(), Log{removeError()});
    EXPECT_EQ(folder_.read("p"), "new");
}

TEST_F(PresetBackup, ReadsAFileWithoutABackup) {
    folder_.write("p", "file");
    EXPECT_EQ(load(), "file");
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(PresetBackup, RestoresABackupBesideAHalfWrittenFile) {
    folder_.write("p", "half");
    folder_.write("p_bak", "backup");
    EXPECT_EQ(load(), "backup");
    EXPECT_EQ(folder_.read("p"), "backup");
    EXPECT_FALSE(folder_.exists("p_bak"));
    EXPECT_EQ(test::takeLog(), Log{found()});
}

TEST_F(PresetBackup, RestoresABackupWithoutAFile) {
    folder_.write("p_bak", "backup");
    EXPECT_EQ(load(), "backup");
    EXPECT_FALSE(folder_.exists("p_bak"));
    EXPECT_EQ(test::takeLog(), Log{found()});
}

TEST_F(PresetBackup, IgnoresABackupThatIsAFolder) {
    folder_.write("p", "file");
    ASSERT_EQ(mkdir(folder_.path("p_bak").c_str(), 0700), 0);
    EXPECT_EQ(load(), "file");
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(PresetBackup, FailsToReadWhenTheHalfWrittenFileCannotBeRemoved) {
    folder_.write("p", "half");
    folder_.write("p_bak", "backup");
    test::FileRecorder files;
    files.fail("remove p", EACCES);
    EXPECT_EQ(load(), "(failed)");
    EXPECT_EQ(test::takeLog(), Log{found()});
    EXPECT_EQ(folder_.read("p_bak"), "backup");
}

TEST_F(PresetBackup, FailsToReadWhenTheBackupCannotBePutBack) {
    folder_.write("p_bak", "backup");
    test::FileRecorder files;
    files.fail("rename p_bak p", ENOENT);
    EXPECT_EQ(load(), "(failed)");
    EXPECT_EQ(test::takeLog(), Log{found()});
}

TEST_F(PresetBackup, HasNothingToReadWithoutAFile) {
    EXPECT_EQ(load(), "(none)");
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(PresetBackup, ReadsNothingButRegularFiles) {
    ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
    EXPECT_EQ(load(), "(none)") << "a folder";
    ASSERT_EQ(rmdir(path_.c_str()), 0);
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(load(), "(none)") << "a FIFO, which must not block";
    ASSERT_EQ(unlink(path_.c_str()), 0);
    ASSERT_EQ(symlink("/dev/zero", path_.c_str()), 0);
    EXPECT_EQ(load(), "(none)") << "a device";
}

} // namespace
} // namespace morvane
