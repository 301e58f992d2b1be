#include "engine/preset_backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>

namespace morvane {

namespace {

/// What there is at a path, symbolic links followed.
enum class Found {
    nothing,
    regularFile,
    somethingElse,
    unknown
};

Found lookUp(const std::string& path, struct stat& status) {
    if (stat(path.c_str(), &status) == 0)
        return S_ISREG(status.st_mode) ? Found::regularFile : Found::somethingElse;
    switch (errno) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG: // a file's name may leave no room for its backup's
    case ELOOP:
        return Found::nothing;
    default:
        return Found::unknown;
    }
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return path.substr(0, slash + 1);
}

// Makes what was renamed, created or removed in the file's folder survive a power cut. A folder
// that cannot be opened, or whose file system cannot sync it, is no error: it has no more to give.
bool syncFolder(const std::string& path) {
    const int folder = open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return true;
    const bool lost = fsync(folder) != 0 && (errno == EIO || errno == ENOSPC || errno == EDQUOT);
    close(folder);
    return !lost;
}

// A file that was not there cannot be missed.
bool succeededOrMissing(int result) {
    return result == 0 || errno == ENOENT;
}

bool writeOut(std::FILE* stream) {
    const bool written =
        std::ferror(stream) == 0 && std::fflush(stream) == 0 && fsync(fileno(stream)) == 0;
    return std::fclose(stream) == 0 && written;
}

void putBack(const std::string& path) {
    if (std::rename(backupOf(path).c_str(), path.c_str()) != 0 && errno == ENOENT)
        std::remove(path.c_str());
    syncFolder(path);
}

// Puts the backup of an interrupted store in the place of the half-written file.
bool recover(const std::string& path) {
    switch (lookUpBackup(path)) {
    case BackupState::none:
        return true;
    case BackupState::unknown:
        return false;
    case BackupState::leftOver:
        break;
    }
    syslog(LOG_INFO, "Backup preset file found.\n");
    return succeededOrMissing(std::remove(path.c_str())) &&
           std::rename(backupOf(path).c_str(), path.c_str()) == 0;
}

std::FILE* streamOf(int file, const char* mode) {
    std::FILE* const stream = fdopen(file, mode);
    if (stream == nullptr)
        close(file);
    return stream;
}

// Looks before it opens, since opening a device may do something, and looks again at what it has
// opened, which may be something else by then. Never waits: a FIFO may have no writer.
std::FILE* openRegularFile(const std::string& path) {
    struct stat status {};
    if (lookUp(path, status) != Found::regularFile)
        return nullptr;
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        return streamOf(file, "r");
    close(file);
    return nullptr;
}

// What cannot be kept is left as closed as the file was created.
void keepPermissions(int file, const struct stat& replaced) {
    constexpr auto sameOwner = static_cast<uid_t>(-1);
    struct stat created {};
    const bool hasGroup = fchown(file, replaced.st_uid, replaced.st_gid) == 0 ||
                          fchown(file, sameOwner, replaced.st_gid) == 0 ||
                          (fstat(file, &created) == 0 && created.st_gid == replaced.st_gid);
    const mode_t kept = hasGroup ? S_IRWXU | S_IRWXG | S_IRWXO : S_IRWXU | S_IRWXO;
    fchmod(file, replaced.st_mode & kept);
}

// Creates the file where nothing is left, so that no link that was put there meanwhile is followed.
// @param replaced what it replaces; null if that is nothing.
std::FILE* createFile(const std::string& path, const struct stat* replaced) {
    constexpr mode_t ownerAlone = S_IRUSR | S_IWUSR;
    constexpr mode_t everybody = ownerAlone | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH; // less umask
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                          replaced != nullptr ? ownerAlone : everybody);
    if (file < 0)
        return nullptr;
    if (replaced != nullptr)
        keepPermissions(file, *replaced);
    return streamOf(file, "w");
}

// A folder or a device that somebody named by mistake is not moved away, nor is what cannot be told
// from one.
bool mayBeReplaced(Found found) {
    return found == Found::nothing || found == Found::regularFile;
}

} // namespace

std::string backupOf(const std::string& path) {
    return path + "_bak";
}

BackupState lookUpBackup(const std::string& path) {
    struct stat status {};
    switch (lookUp(backupOf(path), status)) {
    case Found::nothing:
    case Found::somethingElse:
        return BackupState::none;
    case Found::regularFile:
        return BackupState::leftOver;
    case Found::unknown:
        return BackupState::unknown;
    }
    return BackupState::unknown;
}

bool openPresetForRead(const std::string& path, std::FILE*& stream) {
    stream = nullptr;
    if (!recover(path))
        return false;
    stream = openRegularFile(path);
    return true;
}

bool openPresetForWrite(const std::string& path, std::FILE*& stream) {
    stream = nullptr;
    const auto backup = backupOf(path);
    struct stat fileStatus {};
    struct stat backupStatus {};
    const auto file = lookUp(path, fileStatus);
    const auto oldBackup = lookUp(backup, backupStatus);
    if (!mayBeReplaced(file) || !mayBeReplaced(oldBackup) ||
        !succeededOrMissing(std::rename(path.c_str(), backup.c_str())) || !syncFolder(path)) {
        syslog(LOG_ERR, "Error renaming file %s to %s", path.c_str(), backup.c_str());
        return false;
    }
    const struct stat* replaced = nullptr;
    if (file == Found::regularFile)
        replaced = &fileStatus;
    else if (oldBackup == Found::regularFile) // all that an interrupted store may have left
        replaced = &backupStatus;
    stream = createFile(path, replaced);
    return true;
}

bool closePresetAfterWrite(const std::string& path, std::FILE* stream) {
    if (!writeOut(stream) || !syncFolder(path)) {
        syslog(LOG_ERR, "Error writing file %s", path.c_str());
        putBack(path);
        return false;
    }
    const auto backup = backupOf(path);
    if (!succeededOrMissing(std::remove(backup.c_str())) || !syncFolder(path)) {
        syslog(LOG_ERR, "Error removing file %s", backup.c_str());
        return false;
    }
    return true;
}

} // namespace morvane
