// Keeps a preset data file safe while it is replaced. Writing goes through these steps; after a
// power cut following any of them, the disk holds what is listed beside it, and reading the preset
// gives the old or the new file, always a complete one:
//
//   1. rename the file to its backup, sync the folder    the backup, which is the old file
//   2. create and write the file                         the backup, and a part of the new file
//   3. sync and close the file, sync the folder          the backup, and the new file
//   4. remove the backup, sync the folder                the new file
//
// As long as there is a backup, it is the valid file.
#pragma once

#include <cstdio>
#include <string>

namespace morvane {

/// Whether an interrupted store left its backup of a file.
enum class BackupState {
    none,
    leftOver,
    unknown, ///< it cannot be examined; errno says why
};

/// @return the name of the backup of a file.
std::string backupOf(const std::string& path);

/// Looks for the backup of a file. Only a regular file, or a symbolic link to one, is a backup.
[[nodiscard]] BackupState lookUpBackup(const std::string& path);

/// Opens a preset data file for reading. If a store of it was interrupted, its backup is put back
/// first.
///
/// Never blocks, and opens nothing but regular files: anything else (a folder, a FIFO, a device)
/// cannot be read.
///
/// @param stream receives the stream, owned by the caller; null if there is none to read.
/// @return false if the backup could not be put back, or even looked for; true otherwise, even
///         without a stream.
bool openPresetForRead(const std::string& path, std::FILE*& stream);

/// Renames the file to its backup, replacing an older backup, and opens a new file for writing. The
/// new file has the permissions of the one that it replaces, and its owner and group where this
/// process may set them; if it cannot have the group, it has no group permissions.
///
/// Nothing is moved unless the path holds nothing, a regular file or a symbolic link to either, and
/// the path of the backup nothing, a regular file or a link to one. What cannot be examined counts
/// as something else.
///
/// @param stream receives the stream, to be handed to `closePresetAfterWrite`; null if the file
///               cannot be created, in which case the backup stays and the next read restores it.
/// @return false if the backup could not be made, which is logged; true otherwise, even without a
///         stream.
bool openPresetForWrite(const std::string& path, std::FILE*& stream);

/// Syncs what was written to the disk, closes the stream and removes the backup.
///
/// If anything could not be written (a full disk, an I/O error), logs it and puts the old file
/// back; if there was none, the half-written file is removed.
///
/// @return whether the new file is complete and the backup gone.
bool closePresetAfterWrite(const std::string& path, std::FILE* stream);

} // namespace morvane
