#include "engine/preset_backup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>

namespace morvane {

namespace {

std::string backupOf(const std::string& path) {
    return path + "_bak";
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

} // namespace

std::string leftOverBackup(const std::string& path) {
    auto backup = backupOf(path);
    struct stat status {};
    return stat(backup.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? backup : "";
}

namespace {

// Puts the backup of an interrupted store in the place of the half-written file.
bool recover(const std::string& path) {
    const auto backup = leftOverBackup(path);
    if (backup.empty())
        return true;
    syslog(LOG_INFO, "Backup preset file found.\n");
    return succeededOrMissing(std::remove(path.c_str())) &&
           std::rename(backup.c_str(), path.c_str()) == 0;
}

// Opens without blocking, so that a FIFO does not keep the service waiting for a writer.
std::FILE* openRegularFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    struct stat status {};
    std::FILE* stream = nullptr;
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        stream = fdopen(file, "r");
    if (stream == nullptr)
        close(file);
    return stream;
}

} // namespace

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
    if (!succeededOrMissing(std::rename(path.c_str(), backup.c_str())) || !syncFolder(path)) {
        syslog(LOG_ERR, "Error renaming file %s to %s", path.c_str(), backup.c_str());
        return false;
    }
    stream = std::fopen(path.c_str(), "w");
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
