#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace morvane::test {

TempFolder::TempFolder() {
    auto name = (std::filesystem::temp_directory_path() / "morvane-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        ADD_FAILURE() << "cannot make a folder like " << name;
    folder_ = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string TempFolder::path(std::string_view name) const {
    return (folder_ / name).string();
}

std::string TempFolder::write(std::string_view name, std::string_view content) const {
    std::ofstream file(path(name), std::ios::binary);
    file << content;
    EXPECT_TRUE(file.flush()) << path(name);
    return path(name);
}

std::string TempFolder::read(std::string_view name) const {
    std::ifstream file(path(name), std::ios::binary);
    EXPECT_TRUE(file) << path(name);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool TempFolder::exists(std::string_view name) const {
    return std::filesystem::exists(path(name));
}

} // namespace morvane::test
