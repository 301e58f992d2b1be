#include "data_file.h"

#include "engine/preset_backup.h"
#include "engine/preset_file.h"
#include "output.h"

#include <sys/stat.h>
#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <span>
#include <vector>

namespace morvane::ctl {

std::optional<std::string> fileToLoad(const std::string& file, const Messages& messages) {
    auto backup = backupOf(file);
    switch (lookUpBackup(file)) {
    case BackupState::none:
        return file;
    case BackupState::unknown:
        messages.fail("cannot examine " + backup + ": " + std::strerror(errno));
        return std::nullopt;
    case BackupState::leftOver:
        break;
    }
    messages.note("an interrupted store left " + backup + ", which a load puts back");
    return backup;
}

void logToStandardError() {
    openlog("morvanectl", LOG_PERROR, LOG_USER);
    setlogmask(LOG_UPTO(LOG_ERR));
}

OwnedStream openDataFile(const std::string& file, const Messages& messages) {
    struct stat status {};
    OwnedStream stream;
    const bool isThere = stat(file.c_str(), &status) == 0;
    if (isThere && !S_ISREG(status.st_mode)) { // a FIFO would block
        messages.fail("cannot read " + file + ": not a regular file");
        return stream;
    }
    if (isThere)
        stream.reset(std::fopen(file.c_str(), "r"));
    if (!stream)
        messages.fail("cannot read " + file + ": " + std::strerror(errno));
    return stream;
}

bool isAtEnd(std::FILE* stream, const std::string& file, const Messages& messages) {
    if (std::ferror(stream) == 0)
        return true;
    messages.fail("cannot read " + file + ": " + std::strerror(errno));
    return false;
}

bool readDataLines(const std::string& file, const Messages& messages,
                   const std::function<void(const DataLine&)>& use) {
    const auto stream = openDataFile(file, messages);
    if (!stream)
        return false;
    std::vector<char> block(LineReader<presetLineBufferSize>::blockSize);
    PieceCutter cutter(presetLineBufferSize - 1);
    DataLine line{{}, 1};
    while (const auto piece = cutter.next(stream.get(), [&] { return std::span(block); })) {
        line.text = upToNull(*piece);
        line.endsAtNull = line.text.size() < piece->size();
        use(line);
        const bool endsLine = piece->ends_with('\n');
        line.number += endsLine ? 1 : 0;
        line.column = endsLine ? 0 : line.column + static_cast<std::uint32_t>(piece->size());
    }
    return isAtEnd(stream.get(), file, messages);
}

} // namespace morvane::ctl
