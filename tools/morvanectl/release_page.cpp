#include "release_page.h"

#include "html_page.h"
#include "release_report.h"

#include <cstddef>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

/// What the page carries about an older release.
class OlderRelease {
public:
    /// Both are borrowed for the object's life.
    OlderRelease(const ReleaseReport& report, const Release& release)
        : report_(report),
          release_(release),
          parameters_(release) {
        for (const auto& [variant, presets] : report.compared) {
            for (const auto& preset : presets)
                presetNumber(preset);
        }
        for (const auto& row : report.rows)
            addRow(row);
    }

    Json take() {
        auto variants = Json::array();
        for (const auto& variant : release_.variants)
            variants.push_back(jsonOf(variant));
        return {{"name", release_.name},
                {"lost", report_.hasLoss()},
                {"variants", std::move(variants)},
                {"presets", std::move(presets_)},
                {"gone", goneTexts(report_, release_)},
                {"sets", std::move(sets_)},
                {"places", std::move(places_)},
                {"rows", std::move(rows_)},
                {"parameters", parameters_.take()}};
    }

private:
    void addRow(const ReleaseRow& row) {
        auto keys = Json::array();
        for (const auto& [before, after] : row.keys)
            keys.push_back(Json::array({before, after}));
        rows_.push_back({{"fate", row.fate},
                         {"parameter", row.parameter},
                         {"newName", row.newName},
                         {"values", row.values},
                         {"keys", std::move(keys)},
                         {"place", placeOf(row)}});
        parameters_.add(row.parameter);
    }

    // The number of a place, which is added if it is new.
    std::size_t placeOf(const ReleaseRow& row) {
        const auto [place, isNew] = placeNumbers_.try_emplace(row.places, placeNumbers_.size());
        if (isNew) {
            auto on = Json::array();
            for (const auto& [variant, presets] : row.places)
                on.push_back(Json::array({variant, setOf(presets)}));
            places_.push_back(
                {{"text", placesText(row, report_, release_)}, {"on", std::move(on)}});
        }
        return place->second;
    }

    // The number of a set of presets, which is added if it is new.
    std::size_t setOf(const std::vector<std::string>& presets) {
        const auto [set, isNew] = setNumbers_.try_emplace(presets, setNumbers_.size());
        if (isNew) {
            auto numbers = Json::array();
            for (const auto& preset : presets)
                numbers.push_back(presetNumber(preset));
            sets_.push_back(std::move(numbers));
        }
        return set->second;
    }

    std::size_t presetNumber(const std::string& preset) {
        const auto [number, isNew] = presetNumbers_.add(preset);
        if (isNew)
            presets_.push_back(preset);
        return number;
    }

    const ReleaseReport& report_;
    const Release& release_;
    DefinedParameters parameters_;
    Json rows_ = Json::array();
    Json places_ = Json::array();
    std::map<std::vector<PresetsOnVariant>, std::size_t> placeNumbers_;
    Json sets_ = Json::array();
    std::map<std::vector<std::string>, std::size_t> setNumbers_;
    Json presets_ = Json::array();
    Numbering presetNumbers_;
};

} // namespace

void DefinedParameters::add(const std::string& name) {
    const auto& parameters = release_.definitions.parameters;
    const auto addBlocks = [this, &parameters](const std::string& defined) {
        const auto [blocks, isNew] = blocks_.try_emplace(defined);
        if (isNew)
            blocks->second = blocksOf(defined, parameters.text(), lines_);
        return isNew;
    };
    const auto* const parameter = parameters.find(name);
    if (!addBlocks(name) || parameter == nullptr)
        return;
    auto indices = Json::array();
    for (const auto& index : parameter->indices) {
        indices.push_back(index.indexName());
        addBlocks(std::string(index.indexName()));
    }
    indices_[name] = std::move(indices);
}

Json DefinedParameters::take() {
    return {{"file", release_.parameterFile},
            {"blocks", std::move(blocks_)},
            {"indices", std::move(indices_)}};
}

void ReleasePage::add(const ReleaseReport& report, const Release& older) {
    releases_.push_back(OlderRelease(report, older).take());
    for (const auto& row : report.rows)
        parameters_.add(row.newName.empty() ? row.parameter : row.newName);
}

void ReleasePage::add(const std::vector<FileOutcome>& files, const std::string& folder) {
    std::ostringstream text;
    writeFiles(text, files, folder, newest_);
    files_ = {{"count", files.size()}, {"good", countOfGood(files)}, {"text", text.str()}};
}

ExitStatus ReleasePage::write(const Settings& settings, const std::string& suggestion) {
    auto groups = Json::array();
    auto fates = Json::array();
    for (const auto& [fate, code, text] : fateTexts()) {
        if (groups.empty() || groups.back() != titleOf(fate))
            groups.push_back(titleOf(fate));
        fates.push_back({{"code", code}, {"text", text}, {"group", groups.size() - 1}});
    }
    const Json data{{"newest", newest_.name},           {"parameters", parameters_.take()},
                    {"groups", std::move(groups)},      {"fates", std::move(fates)},
                    {"releases", std::move(releases_)}, {"suggestion", suggestion},
                    {"files", std::move(files_)}};
    return writePage(*settings.html, releasePage, data,
                     "compare fewer releases, or one variant with --variant", settings.messages);
}

} // namespace morvane::ctl
