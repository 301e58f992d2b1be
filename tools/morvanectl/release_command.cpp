// morvanectl release: what becomes of the presets that older releases have stored when a release of
// the definition files is installed.

#include "commands.h"
#include "definition_errors.h"
#include "output.h"
#include "release_comparison.h"
#include "release_files.h"
#include "release_page.h"
#include "release_report.h"
#include "release_suggestion.h"
#include "variant.h"
#include "variant_choice.h"

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

// The file of this name in a folder, or that of the usual name.
std::string fileIn(const std::string& folder, const std::string& file, const char* installed) {
    const std::filesystem::path path(
        file == installed ? std::filesystem::path(file).filename().string() : file);
    return (folder / path).string();
}

/// All variants that the release names, unless the settings choose one.
std::optional<Release> readRelease(Settings settings, const std::string& folder) {
    settings.paramDefFile = fileIn(folder, settings.paramDefFile, installedParamDefFile);
    settings.presetDefFile = fileIn(folder, settings.presetDefFile, installedPresetDefFile);
    if (!settings.variantsFile.empty())
        settings.variantsFile = fileIn(folder, settings.variantsFile, "");
    const auto named = readNamedVariants(settings);
    if (!named)
        return std::nullopt;
    settings.allVariants = settings.variant.empty() && !named->empty();
    auto device = readDevice(settings);
    if (!device)
        return std::nullopt;
    return Release{folder, settings.paramDefFile, std::move(device->definitions),
                   std::move(device->variants)};
}

std::optional<Release> readOlder(const Settings& settings, const std::string& folder) {
    auto release = readRelease(settings, folder);
    if (release) // what it has translated itself is of no matter
        release->definitions.presets.translateSections.clear();
    return release;
}

// That of the newest release may be without the variant that is asked for.
std::optional<Release> readNewest(Settings settings) {
    settings.variant.clear();
    return readRelease(settings, settings.releases.back());
}

/// Writes the answer in the form that the settings ask for.
class Answer {
public:
    /// Both are borrowed for the object's life.
    Answer(const Settings& settings, const Release& newest)
        : settings_(settings),
          newest_(newest),
          suggestion_(newest) {
        if (settings.html)
            page_.emplace(newest);
    }

    void add(const ReleaseReport& report, const Release& older) {
        isLost_ = isLost_ || report.hasLoss();
        if (settings_.suggest || page_)
            suggestion_.add(report, older);
        if (page_)
            page_->add(report, older);
        else if (settings_.json)
            list_.push_back(jsonOf(report, older));
        else if (!settings_.suggest)
            writePart([&] { writeReport(report, older, newest_.name); });
    }

    void add(const std::vector<FileOutcome>& files) {
        isLost_ = isLost_ || hasLoss(files);
        if (page_)
            page_->add(files, settings_.file);
        else if (settings_.json)
            list_.push_back(jsonOf(files, settings_.file, newest_));
        else
            writePart([&] { writeFiles(std::cout, files, settings_.file, newest_); });
    }

    ExitStatus finish() {
        if (page_) {
            const auto status = page_->write(settings_, suggestion_.text());
            if (status != ExitStatus::yes)
                return status;
        } else if (settings_.suggest) {
            std::cout << suggestion_.text();
        } else if (settings_.json) {
            writeJson(list_);
        }
        return isLost_ ? ExitStatus::no : ExitStatus::yes;
    }

private:
    template <typename Write>
    void writePart(Write write) {
        std::cout << (isFirst_ ? "" : "\n");
        isFirst_ = false;
        write();
    }

    const Settings& settings_;
    const Release& newest_;
    TranslationSuggestion suggestion_;
    std::optional<ReleasePage> page_; ///< if one is asked for
    Json list_ = Json::array();
    bool isFirst_ = true;
    bool isLost_ = false;
};

} // namespace

ExitStatus showRelease(const Settings& settings) {
    if (settings.json && (settings.suggest || settings.html))
        return settings.messages.fail("release takes one of --html, --json and --suggest");
    auto newest = readNewest(settings);
    if (!newest)
        return ExitStatus::error;
    Answer answer(settings, *newest);
    for (std::size_t i = 0; i + 1 < settings.releases.size(); ++i) {
        const auto older = readOlder(settings, settings.releases[i]);
        if (!older)
            return ExitStatus::error;
        answer.add(compareReleases(*older, *newest), *older);
    }
    if (!settings.file.empty()) {
        const auto files = checkFiles(*newest, settings.file, settings.messages);
        if (!files)
            return ExitStatus::error;
        answer.add(*files);
    }
    return answer.finish();
}

} // namespace morvane::ctl
