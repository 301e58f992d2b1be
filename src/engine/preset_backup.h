// Keeps a preset data file safe while it is replaced. Writing goes through these steps; after a
// power cut behind each of them the disk holds what stands beside it, and reading the preset gives
// the old or the new file, always a complete one:
//
//   1. rename the file to its backup, sync the folder    the backup, which is the old file
//   2. create and write the file                         the backup, and a part of the new file
//   3. sync and close the file, sync the folder          the backup, and the new file
//   4. remove the backup, sync the folder                the new file
//
// As long as there is a backup, it is taken for the valid file.
#pragma once

#include <cstdio>
#include <string>

namespace morvane {

/// @return the path of the backup that an interrupted store left of this file; empty if there is
/// none.
std::string leftOverBackup(const std::string& path);

/// Opens a preset data file for reading. If a store of it was interrupted, its backup is put back
/// first.
///
/// Never blocks: what is not a regular file (a folder, a FIFO, a device) cannot be opened.
///
/// @param stream receives the stream, owned by the caller; null if there is none to read.
/// @return false if the backup could not be put back; true otherwise, even without a stream.
bool openPresetForRead(const std::string& path, std::FILE*& stream);

/// Makes the file its own backup, replacing an older backup, and opens a new file for writing.
///
/// @param stream receives the stream, to be handed to `closePresetAfterWrite`; null if the file
///               cannot be created, in which case the backup stays and the next reading restores
///               it.
/// @return false if the backup could not be made, which is logged; true otherwise, even without a
///         stream.
bool openPresetForWrite(const std::string& path, std::FILE*& stream);

/// Brings what was written to the disk, closes the stream and removes the backup.
///
/// If anything that was written could not be kept (a full disk, an I/O error), logs it and puts the
/// old file back; where there was none, the half-written file is removed.
///
/// @return whether the new file is complete and the backup gone.
bool closePresetAfterWrite(const std::string& path, std::FILE* stream);

} // namespace morvane
