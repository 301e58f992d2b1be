// A folder in which a preset data file "p" is stored and loaded.
#pragma once

#include "engine/preset_backup.h"
#include "support/log_recorder.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <syslog.h>

#include <cstdio>
#include <string>
#include <vector>

namespace morvane {

using Log = std::vector<test::LogRecord>;

class PresetBackup : public testing::Test {
protected:
    PresetBackup() { test::takeLog(); }

    const test::TempFolder folder_;
    const std::string path_ = folder_.path("p");
    const std::string folderName_ =
        path_.substr(0, path_.size() - 2).substr(path_.substr(0, path_.size() - 2).rfind('/') + 1);

    // Stores `text`. Opening may fail by returning false or by giving no stream.
    bool store(const std::string& text) const {
        std::FILE* stream = nullptr;
        if (!openPresetForWrite(path_, stream) || stream == nullptr)
            return false;
        std::fputs(text.c_str(), stream);
        return closePresetAfterWrite(path_, stream);
    }

    // What a reader of the preset finds; "(none)" without a stream, "(failed)" after a failure.
    std::string load() const {
        std::FILE* stream = nullptr;
        if (!openPresetForRead(path_, stream))
            return stream == nullptr ? "(failed)" : "(failed with a stream)";
        if (stream == nullptr)
            return "(none)";
        std::string text;
        for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream))
            text += static_cast<char>(c);
        std::fclose(stream);
        return text;
    }

    test::LogRecord writeError() const { return {LOG_ERR, "Error writing file " + path_}; }
    test::LogRecord renameError() const {
        return {LOG_ERR, "Error renaming file " + path_ + " to " + path_ + "_bak"};
    }
    test::LogRecord removeError() const {
        return {LOG_ERR, "Error removing file " + path_ + "_bak"};
    }
    static test::LogRecord found() { return {LOG_INFO, "Backup preset file found.\n"}; }
};

} // namespace morvane
