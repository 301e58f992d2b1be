// A folder for the files of one test.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace morvane::test {

/// Made empty, removed with everything in it at the end.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// The path of a file in the folder.
    std::string path(std::string_view name) const;

    /// Writes a file and returns its path.
    std::string write(std::string_view name, std::string_view content) const;

    /// The content of a file; fails the test and returns nothing if it cannot be read.
    std::string read(std::string_view name) const;

    bool exists(std::string_view name) const;

private:
    std::filesystem::path folder_;
};

} // namespace morvane::test
