#include "engine/preset_backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>

namespace morvane {

std::string backupOf(const std::string& path) {
    return path + "_bak";
}

namespace {

/// What is at a path, following symbolic links.
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
    case ENAMETOOLONG: // a file name may leave no room for the suffix of its backup
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
// that cannot be opened, or whose file system cannot sync it, is not an error: nothing more can be
// done.
bool syncFolder(const std::string& path) {
    const int folder = open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return true;
    const bool lost = fsync(folder) != 0 && (errno == EIO || errno == ENOSPC || errno == EDQUOT);
    close(folder);
    return !lost;
}

// It is not an error if the file did not exist.
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

// Puts the backup of an interrupted store in place of the half-written file.
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

// Without a buffer: what reads or writes preset data does so in blocks of its own.
std::FILE* streamOf(int file, const char* mode) {
    std::FILE* const stream = fdopen(file, mode);
    if (stream == nullptr)
        close(file);
    else
        std::setvbuf(stream, nullptr, _IONBF, 0);
    return stream;
}

// Checks the file type before opening, since opening a device may have side effects, and again
// after, since the path may have changed in between. Never blocks: a FIFO may have no writer.
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

// Permissions that cannot be kept stay as restricted as the file was created. The mode is also set
// before the owner changes: afterwards, this process may not be allowed to.
void keepPermissions(int file, const struct stat& replaced) {
    constexpr auto sameOwner = static_cast<uid_t>(-1);
    constexpr mode_t withoutGroup = S_IRWXU | S_IRWXO;
    fchmod(file, replaced.st_mode & withoutGroup);
    struct stat created {};
    const bool hasGroup = fchown(file, replaced.st_uid, replaced.st_gid) == 0 ||
                          fchown(file, sameOwner, replaced.st_gid) == 0 ||
                          (fstat(file, &created) == 0 && created.st_gid == replaced.st_gid);
    if (hasGroup)
        fchmod(file, replaced.st_mode & (withoutGroup | S_IRWXG));
}

// Creates the file only if there is nothing at the path, so that no link put there in the meantime
// is followed.
// @param replaced the file that it replaces; null if there is none.
std::FILE* createFile(const std::string& path, const struct stat* replaced) {
    constexpr mode_t ownerAlone = S_IRUSR | S_IWUSR;
    constexpr mode_t everybody = ownerAlone | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH; // less umask
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                          replaced != nullptr ? ownerAlone : everybody);
    if (file < 0)
        return nullptr;
    if (replaced != nullptr)
        keepPermissions(file, *replaced);
    std::FILE* const stream = streamOf(file, "w");
    if (stream == nullptr)
        std::remove(path.c_str()); // or an empty file would be taken for a preset
    return stream;
}

/// What a store finds at the path of a file and at the path of its backup.
struct Places {
    std::string path;
    std::string backup;
    Found atPath = Found::nothing;
    Found atBackup = Found::nothing;
    struct stat file {};
    struct stat oldBackup {};
};

Places lookUpPlaces(const std::string& path) {
    Places places{path, backupOf(path)};
    places.atPath = lookUp(path, places.file);
    places.atBackup = lookUp(places.backup, places.oldBackup);
    struct stat link {};
    if (places.atBackup == Found::nothing && lstat(places.backup.c_str(), &link) == 0)
        places.atBackup = Found::somethingElse; // a link that leads nowhere is not a backup
    return places;
}

// A folder or a device that was named by mistake is not moved away, nor is anything that might be
// one.
bool mayBeReplaced(Found found) {
    return found == Found::nothing || found == Found::regularFile;
}

// Both names may be links to the same file, and renaming one to the other then does nothing.
bool isSameFile(const Places& places) {
    return places.atPath == Found::regularFile && places.atBackup == Found::regularFile &&
           places.file.st_dev == places.oldBackup.st_dev &&
           places.file.st_ino == places.oldBackup.st_ino;
}

bool makeBackup(const Places& places) {
    return mayBeReplaced(places.atPath) && mayBeReplaced(places.atBackup) &&
           succeededOrMissing(std::rename(places.path.c_str(), places.backup.c_str())) &&
           (!isSameFile(places) || succeededOrMissing(std::remove(places.path.c_str()))) &&
           syncFolder(places.path);
}

// What the new file replaces: the backup is all that an interrupted store may have left.
const struct stat* replacedBy(const Places& places) {
    if (places.atPath == Found::regularFile)
        return &places.file;
    return places.atBackup == Found::regularFile ? &places.oldBackup : nullptr;
}

} // namespace

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
    const auto places = lookUpPlaces(path);
    if (!makeBackup(places)) {
        syslog(LOG_ERR, "Error renaming file %s to %s", path.c_str(), places.backup.c_str());
        return false;
    }
    stream = createFile(path, replacedBy(places));
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
