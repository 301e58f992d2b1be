#include "stored_file.h"

#include "engine/preset_backup.h"
#include "engine/preset_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

namespace morvane::ctl {

namespace {

namespace fs = std::filesystem;

// What keeps a file from being written; empty if nothing does.
std::string obstacle(const std::string& file, const std::string& input,
                     const StoredValues& values) {
    std::error_code error;
    if (values.empty())
        return "no line would be set";
    if (lookUpBackup(file) != BackupState::none)
        return "an interrupted store left " + backupOf(file) + ", which a load would put back";
    if (!fs::exists(file, error))
        return error ? error.message() : "";
    if (!fs::is_regular_file(file, error))
        return "not a regular file";
    return fs::equivalent(file, input, error) ? "it is the file that is read" : "";
}

bool writeLines(std::FILE* stream, const StoredValues& values) {
    std::vector<std::string> keys;
    std::vector<const char*> texts;
    for (const auto& [key, value] : values) {
        keys.push_back(key);
        texts.push_back(value.c_str());
    }
    return writePresetFile(stream, KeySet(std::move(keys)), texts) ==
           static_cast<int>(values.size());
}

} // namespace

ExitStatus writeStoredFile(const std::string& file, const std::string& input,
                           const StoredValues& values, const Messages& messages) {
    const auto cannot = [&](const std::string& why) {
        return messages.fail("cannot write " + file + ": " + why);
    };
    const auto reason = obstacle(file, input, values);
    if (!reason.empty())
        return cannot(reason);
    std::error_code error;
    const auto target = fs::weakly_canonical(file, error).string(); // a link stays a link
    if (error)
        return cannot(error.message());
    const auto part = target + "_new";
    std::FILE* stream = nullptr;
    if (!openPresetForWrite(part, stream) || stream == nullptr)
        return cannot(std::strerror(errno));
    const bool isWritten = writeLines(stream, values);
    if (!closePresetAfterWrite(part, stream) || !isWritten ||
        std::rename(part.c_str(), target.c_str()) != 0) {
        const auto status = cannot(std::strerror(errno));
        std::remove(part.c_str());
        return status;
    }
    return ExitStatus::yes;
}

} // namespace morvane::ctl
