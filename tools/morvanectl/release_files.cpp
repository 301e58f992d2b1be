#include "release_files.h"

#include "data_check.h"
#include "data_file.h"
#include "engine/preset_backup.h"
#include "variant.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace morvane::ctl {

namespace {

namespace fs = std::filesystem;

// The files that loads may name: a backup counts as the file that it is of.
std::set<std::string> dataFiles(const std::string& folder, std::error_code& error) {
    const auto backup = backupOf("");
    std::set<std::string> files;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (!entry->is_regular_file(error))
            continue;
        auto path = entry->path().string();
        if (path.ends_with(backup))
            path.resize(path.size() - backup.size());
        files.insert(std::move(path));
    }
    return files;
}

std::optional<std::vector<Finding>> warningsIn(const std::string& file, const Variant& variant,
                                               const Messages& messages) {
    DataCheck check(variant, "", file, Reports::off);
    std::vector<Finding> warnings;
    const bool isRead = readDataLines(file, messages, [&](const DataLine& line) {
        for (auto& finding : check.check(line).findings()) {
            if (finding.severity == Severity::warning)
                warnings.push_back(std::move(finding));
        }
    });
    return isRead ? std::optional(std::move(warnings)) : std::nullopt;
}

// Reads the files on one variant, and keeps what is less than before.
bool checkOn(std::size_t number, const Variant& variant, std::vector<FileOutcome>& files,
             const Messages& messages) {
    return std::all_of(files.begin(), files.end(), [&](FileOutcome& file) {
        auto warnings = warningsIn(file.file, variant, messages);
        if (!warnings)
            return false;
        if (number == 0 || warnings->size() < file.warnings.size()) {
            file.variant = number;
            file.warnings = *std::move(warnings);
        }
        return true;
    });
}

// Such as " [on studio-us]".
std::string whereText(const FileOutcome& file, const Release& release) {
    const auto& name = release.variants[file.variant].name;
    return name.empty() ? "" : " [on " + name + "]";
}

} // namespace

std::optional<std::vector<FileOutcome>> checkFiles(Release& release, const std::string& folder,
                                                   const Messages& messages) {
    std::error_code error;
    std::vector<FileOutcome> files;
    for (const auto& file : dataFiles(folder, error)) {
        auto path = fileToLoad(file, messages);
        if (!path)
            return std::nullopt;
        files.push_back({*std::move(path), 0, {}});
    }
    if (error || files.empty()) {
        messages.fail(error ? "cannot read " + folder + ": " + error.message()
                            : "no preset data file in " + folder);
        return std::nullopt;
    }
    bool areRead = true;
    for (std::size_t i = 0; areRead && i < release.variants.size(); ++i) {
        const auto& arguments = release.variants[i].arguments;
        PresetManager manager(release.definitions, arguments);
        Variant variant{std::move(release.definitions), arguments, std::move(manager)};
        areRead = checkOn(i, variant, files, messages);
        release.definitions = std::move(variant.definitions);
    }
    return areRead ? std::optional(std::move(files)) : std::nullopt;
}

std::size_t countOfGood(const std::vector<FileOutcome>& files) {
    return static_cast<std::size_t>(std::count_if(
        files.begin(), files.end(), [](const FileOutcome& file) { return file.warnings.empty(); }));
}

void writeFiles(std::ostream& stream, const std::vector<FileOutcome>& files,
                const std::string& folder, const Release& release) {
    stream << folder << " -> " << release.name << '\n'
           << countOfGood(files) << " of " << files.size()
           << (files.size() == 1 ? " file" : " files") << " without a warning\n";
    for (const auto& file : files) {
        for (const auto& warning : file.warnings)
            write(stream, warning, whereText(file, release));
    }
}

Json jsonOf(const std::vector<FileOutcome>& files, const std::string& folder,
            const Release& release) {
    auto warnings = Json::array();
    for (const auto& file : files) {
        for (auto warning : file.warnings) {
            const auto& variant = release.variants[file.variant].name;
            if (!variant.empty())
                warning.variants = {variant};
            appendJson(warnings, warning);
        }
    }
    return {{"files", folder},
            {"lost", hasLoss(files)},
            {"count", files.size()},
            {"good", countOfGood(files)},
            {"findings", std::move(warnings)}};
}

bool hasLoss(const std::vector<FileOutcome>& files) {
    return countOfGood(files) < files.size();
}

} // namespace morvane::ctl
