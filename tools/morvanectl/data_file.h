// Preset data files as the offline commands read them: the file that a load would read, line by
// line as a load reads it. Nothing on the disk is changed.
#pragma once

#include "output.h"
#include "text/line_reader.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace morvane::ctl {

/// The file that a load would read. A load puts the backup that an interrupted store has left back
/// in the file's place; here the backup itself is read instead, which a note on standard error
/// says.
///
/// @return nothing, with a message on standard error, if it cannot be told whether there is a
///         backup, with which a load fails.
std::optional<std::string> fileToLoad(const std::string& file, const Messages& messages);

/// From now on, what the code of the service logs as an error goes to standard error, too.
void logToStandardError();

/// Opens a regular file for reading.
/// @return null, with a message on standard error, if it cannot be read.
OwnedStream openDataFile(const std::string& file, const Messages& messages);

/// Whether reading came to the end; if not, a message on standard error says so.
bool isAtEnd(std::FILE* stream, const std::string& file, const Messages& messages);

/// A line of a preset data file, or a piece of one: a load reads a long line as several.
struct DataLine {
    std::string_view text;    ///< as a load sees it, with its line feed
    std::uint32_t number = 0; ///< of the line, as an editor counts, from 1
    std::uint32_t column = 0; ///< where the piece begins in its line, in bytes from 0
    bool endsAtNull = false;  ///< a null byte ends it, and the rest of the piece is not read
};

/// Hands the lines and pieces of a file to `use`, in order. Their texts are gone when it returns.
/// @return false, with a message on standard error, if the file cannot be read to its end.
bool readDataLines(const std::string& file, const Messages& messages,
                   const std::function<void(const DataLine&)>& use);

} // namespace morvane::ctl
