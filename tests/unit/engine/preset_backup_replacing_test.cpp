// What a store replaces, and what it keeps of it.

#include "support/file_recorder.h"
#include "unit/engine/preset_backup_fixture.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

namespace morvane {
namespace {

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

/// Makes something other than a regular file at a path.
struct OtherKind {
    const char* name;
    void (*make)(const std::string& path);
};

void makeFolder(const std::string& path) {
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
}

void makeFifo(const std::string& path) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
}

void makeSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), address.sun_path);
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(server);
}

void makeLinkToDevice(const std::string& path) {
    ASSERT_EQ(symlink("/dev/null", path.c_str()), 0);
}

constexpr OtherKind otherKinds[] = {
    {"a folder", makeFolder},
    {"a FIFO", makeFifo},
    {"a socket", makeSocket},
    {"a link to a device", makeLinkToDevice},
};

TEST_F(PresetBackup, ReplacesNothingButFiles) {
    for (const auto& [name, make] : otherKinds) {
        SCOPED_TRACE(name);
        make(path_);
        const auto before = statusOf(path_);
        EXPECT_FALSE(store("new"));
        EXPECT_EQ(test::takeLog(), Log{renameError()});
        EXPECT_EQ(statusOf(path_).st_ino, before.st_ino) << "nothing is moved";
        EXPECT_FALSE(folder_.exists("p_bak"));
        std::remove(path_.c_str());
    }
}

TEST_F(PresetBackup, ReplacesNoBackupThatIsNoFile) {
    const auto backup = folder_.path("p_bak");
    for (const bool withFile : {true, false}) {
        for (const auto& [name, make] : otherKinds) {
            SCOPED_TRACE(name);
            if (withFile)
                folder_.write("p", "old");
            make(backup);
            const auto before = statusOf(backup);
            EXPECT_FALSE(store("new"));
            EXPECT_EQ(test::takeLog(), Log{renameError()});
            EXPECT_EQ(statusOf(backup).st_ino, before.st_ino);
            EXPECT_EQ(load(), withFile ? "old" : "(none)") << "which is not taken for a backup";
            std::remove(backup.c_str());
            std::remove(path_.c_str());
        }
    }
}

TEST_F(PresetBackup, ReplacesNothingThatCannotBeLookedAt) {
    folder_.write("p", "old");
    for (const auto* const call : {"stat p", "stat p_bak"}) {
        test::FileRecorder files;
        files.fail(call, EIO);
        EXPECT_FALSE(store("new")) << call;
        EXPECT_EQ(files.calls(), std::vector<std::string>()) << call;
        EXPECT_EQ(test::takeLog(), Log{renameError()});
    }
}

TEST_F(PresetBackup, ReplacesALinkAndNotWhatItLeadsTo) {
    folder_.write("target", "old");
    ASSERT_EQ(symlink("target", path_.c_str()), 0);
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(folder_.read("target"), "old");
    EXPECT_EQ(folder_.read("p"), "new");
    EXPECT_TRUE(S_ISREG(statusOf(path_).st_mode));
    EXPECT_FALSE(folder_.exists("p_bak"));
}

TEST_F(PresetBackup, ReplacesALinkThatLeadsNowhere) {
    for (const auto* const target : {"nowhere", "p"}) {
        ASSERT_EQ(symlink(target, path_.c_str()), 0);
        EXPECT_TRUE(store("new")) << target;
        EXPECT_EQ(folder_.read("p"), "new");
        EXPECT_FALSE(folder_.exists("nowhere"));
        std::remove(path_.c_str());
    }
    EXPECT_EQ(test::takeLog(), Log{});
}

TEST_F(PresetBackup, ReplacesNoBackupThatIsALinkToNothing) {
    folder_.write("p", "old");
    for (const auto* const target : {"nowhere", "p_bak"}) {
        ASSERT_EQ(symlink(target, folder_.path("p_bak").c_str()), 0);
        EXPECT_FALSE(store("new")) << target;
        EXPECT_EQ(test::takeLog(), Log{renameError()});
        EXPECT_EQ(load(), "old");
        std::remove(folder_.path("p_bak").c_str());
    }
}

// Renaming one hard link of a file to another does nothing. Some file systems rename in two steps,
// between which a power cut leaves both.
TEST_F(PresetBackup, MakesABackupOfAFileThatIsItsOwnBackup) {
    folder_.write("p", "old");
    ASSERT_EQ(link(path_.c_str(), folder_.path("p_bak").c_str()), 0);
    std::FILE* stream = nullptr;
    EXPECT_TRUE(openPresetForWrite(path_, stream));
    EXPECT_EQ(folder_.read("p_bak"), "old");
    EXPECT_TRUE(closePresetAfterWrite(path_, stream));
    EXPECT_EQ(load(), "");
    EXPECT_FALSE(folder_.exists("p_bak"));
}

TEST_F(PresetBackup, MakesAFileTheBackupThatIsALinkToIt) {
    folder_.write("p", "old");
    ASSERT_EQ(symlink("p", folder_.path("p_bak").c_str()), 0);
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(load(), "new");
    EXPECT_FALSE(folder_.exists("p_bak"));
}

// Somebody puts a file, or a link, where the renamed file was.
TEST_F(PresetBackup, WritesIntoNothingThatIsThere) {
    folder_.write("victim", "precious");
    for (const auto* const kind : {"file", "link"}) {
        SCOPED_TRACE(kind);
        if (kind == std::string("file"))
            folder_.write("p", "planted");
        else
            ASSERT_EQ(symlink("victim", path_.c_str()), 0);
        test::FileRecorder files;
        files.fail("rename p p_bak", ENOENT); // as if the file were put there afterwards
        EXPECT_FALSE(store("new"));
        EXPECT_EQ(folder_.read("p"), kind == std::string("file") ? "planted" : "precious");
        EXPECT_EQ(test::takeLog(), Log{});
        std::remove(path_.c_str());
    }
}

class Permissions : public PresetBackup {
protected:
    void SetUp() override { before_ = umask(022); }
    void TearDown() override { umask(before_); }

    // The permission bits that a store over a file with these gives to the new file, before
    // anything is written.
    mode_t kept(mode_t mode) const {
        std::remove(path_.c_str()); // which may be read-only
        folder_.write("p", "old");
        EXPECT_EQ(chmod(path_.c_str(), mode), 0);
        std::FILE* stream = nullptr;
        EXPECT_TRUE(openPresetForWrite(path_, stream));
        const mode_t bits = statusOf(path_).st_mode & 07777U;
        EXPECT_TRUE(closePresetAfterWrite(path_, stream));
        return bits;
    }

private:
    mode_t before_ = 0;
};

TEST_F(Permissions, AreThoseOfTheReplacedFile) {
    for (const mode_t mode : {0600U, 0640U, 0604U, 0660U, 0666U, 0444U, 0777U})
        EXPECT_EQ(kept(mode), mode) << std::oct << mode;
    EXPECT_EQ(kept(07755U), 0755U) << "without those that let a program be somebody else";
}

TEST_F(Permissions, AreThoseOfTheFileThatALinkLeadsTo) {
    folder_.write("target", "old");
    ASSERT_EQ(chmod(folder_.path("target").c_str(), 0640), 0);
    ASSERT_EQ(symlink("target", path_.c_str()), 0);
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(statusOf(path_).st_mode & 07777U, 0640U);
}

TEST_F(Permissions, AreThoseOfTheBackupThatAnInterruptedStoreLeftAlone) {
    folder_.write("p_bak", "old");
    ASSERT_EQ(chmod(folder_.path("p_bak").c_str(), 0640), 0);
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(statusOf(path_).st_mode & 07777U, 0640U);
}

TEST_F(Permissions, OfANewFileAreWhatTheUmaskLeaves) {
    for (const auto& [mask, mode] : {std::pair{022U, 0644U}, {077U, 0600U}, {002U, 0664U}}) {
        umask(mask);
        EXPECT_TRUE(store("new"));
        EXPECT_EQ(statusOf(path_).st_mode & 07777U, mode);
        std::remove(path_.c_str());
    }
}

// Only root can give files away, and tests run as root or as any user.
TEST_F(Permissions, IncludeTheOwnerAndTheGroupWhereTheProcessMay) {
    constexpr uid_t other = 12345;
    folder_.write("p", "old");
    const bool mayGiveAway = chown(path_.c_str(), other, other) == 0;
    ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(statusOf(path_).st_uid, mayGiveAway ? other : getuid());
    EXPECT_EQ(statusOf(path_).st_gid, mayGiveAway ? other : getgid());
    EXPECT_EQ(statusOf(path_).st_mode & 07777U, 0640U);
}

struct Refusals {
    const char* why;
    int count; ///< how many attempts to give the new file away are refused
    gid_t oldGroup;
    mode_t bits;
};

TEST_F(Permissions, AreNotForAGroupThatTheNewFileCannotHave) {
    constexpr gid_t other = 12345;
    for (const auto& [why, count, oldGroup, bits] :
         {Refusals{"the owner alone is refused", 1, other, 0664},
          Refusals{"the group, too", 2, other, 0604},
          Refusals{"both, but it has the group already", 2, getgid(), 0664}}) {
        SCOPED_TRACE(why);
        folder_.write("p", "old");
        if (chown(path_.c_str(), getuid(), oldGroup) != 0)
            continue; // only root can give a file to any group; the last row needs no other group
        ASSERT_EQ(chmod(path_.c_str(), 0664), 0);
        test::FileRecorder files;
        for (int i = 0; i < count; ++i)
            files.fail("fchown p", EPERM, i);
        EXPECT_TRUE(store("new"));
        EXPECT_EQ(statusOf(path_).st_mode & 07777U, bits);
    }
}

TEST_F(PresetBackup, FailsToReadWhenTheBackupCannotBeLookedAt) {
    for (const int error : {EIO, EACCES, EOVERFLOW}) {
        folder_.write("p", "half");
        folder_.write("p_bak", "backup");
        test::FileRecorder files;
        files.fail("stat p_bak", error);
        EXPECT_EQ(load(), "(failed)") << error;
        EXPECT_EQ(files.calls(), std::vector<std::string>()) << "nothing is changed";
        EXPECT_EQ(test::takeLog(), Log{});
    }
}

TEST_F(PresetBackup, NeedsNoRoomForTheNameOfABackup) {
    const std::string name(253, 'n'); // 255 is the limit
    std::FILE* stream = nullptr;
    EXPECT_TRUE(openPresetForRead(folder_.write(name, "file"), stream));
    ASSERT_NE(stream, nullptr);
    std::fclose(stream);
}

TEST_F(PresetBackup, TakesALinkThatLeadsNowhereForNoBackup) {
    folder_.write("p", "file");
    ASSERT_EQ(symlink("p_bak", folder_.path("p_bak").c_str()), 0);
    EXPECT_EQ(load(), "file");
    ASSERT_EQ(unlink(folder_.path("p_bak").c_str()), 0);
    EXPECT_FALSE(folder_.exists("p/p_bak"));
    EXPECT_EQ(lookUpBackup(folder_.path("p/p")), BackupState::none) << "below a file";
}

TEST_F(PresetBackup, RestoresABackupOfAnyDate) {
    constexpr timespec year2040{2208988800, 0};
    const std::array<timespec, 2> times{year2040, year2040};
    folder_.write("p", "half");
    const auto backup = folder_.write("p_bak", "backup");
    for (const auto& path : {path_, backup})
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times.data(), 0), 0);
    EXPECT_EQ(load(), "backup");
    EXPECT_TRUE(store("new"));
    EXPECT_EQ(load(), "new");
}

TEST_F(PresetBackup, ReadsAFileThroughALink) {
    folder_.write("target", "file");
    ASSERT_EQ(symlink("target", path_.c_str()), 0);
    EXPECT_EQ(load(), "file");
    EXPECT_TRUE(S_ISLNK(statusOf(path_).st_mode));
}

TEST_F(PresetBackup, RestoresABackupThatIsALinkToAFile) {
    folder_.write("p", "half");
    folder_.write("target", "backup");
    ASSERT_EQ(symlink("target", folder_.path("p_bak").c_str()), 0);
    EXPECT_EQ(load(), "backup");
    EXPECT_TRUE(S_ISLNK(statusOf(path_).st_mode));
    EXPECT_FALSE(folder_.exists("p_bak"));
    EXPECT_EQ(test::takeLog(), Log{found()});
}

// Something else takes the place of the file between the check of its type and its opening.
TEST_F(PresetBackup, ReadsAndWaitsForNothingThatTookThePlaceOfAFile) {
    for (const auto* const kind : {"FIFO", "folder"}) {
        SCOPED_TRACE(kind);
        folder_.write("p", "old");
        test::FileRecorder files;
        files.before("look p", [&] {
            std::remove(path_.c_str());
            const auto make = kind == std::string("FIFO") ? mkfifo : mkdir;
            EXPECT_EQ(make(path_.c_str(), 0700), 0);
        });
        EXPECT_EQ(load(), "(none)");
        EXPECT_EQ(test::takeLog(), Log{});
        std::remove(path_.c_str());
    }
}

// A daemon has no controlling terminal. A line that became one would end it by hanging up.
TEST_F(PresetBackup, TakesNoControllingTerminal) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0) << "needs /dev/ptmx";
    ASSERT_EQ(grantpt(master), 0);
    ASSERT_EQ(unlockpt(master), 0);
    folder_.write("p", "old");
    const auto loadTerminal = [&] {
        test::FileRecorder files;
        files.before("look p", [&] {
            std::remove(path_.c_str());
            EXPECT_EQ(symlink(ptsname(master), path_.c_str()), 0);
        });
        return load();
    };
    EXPECT_EXIT(
        {
            setsid(); // as a process that detaches does
            const bool refused = loadTerminal() == "(none)";
            const int terminal = open("/dev/tty", O_RDWR);
            std::_Exit(refused && terminal < 0 && errno == ENXIO ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    close(master);
}

// Opening a device may have effects: rewind a tape, start a watchdog, hang up a line.
TEST_F(PresetBackup, OpensNothingThatItDoesNotRead) {
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, path_.c_str(), IN_OPEN), 0);
    EXPECT_EQ(load(), "(none)");
    std::array<char, 512> events{};
    EXPECT_EQ(read(watch, events.data(), events.size()), -1);
    EXPECT_EQ(errno, EAGAIN);
    close(watch);
}

} // namespace
} // namespace morvane
