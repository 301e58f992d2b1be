#include "release_page.h"

#include "html_page.h"
#include "release_report.h"

#include <cstddef>
#include <map>
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
          lines_(blockLines(release.definitions.parameters.text())) {
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
                {"variants", std::move(variants)},
                {"presets", std::move(presets_)},
                {"gone", goneTexts(report_, release_)},
                {"sets", std::move(sets_)},
                {"places", std::move(places_)},
                {"rows", std::move(rows_)},
                {"parameters", {{"file", release_.parameterFile}, {"blocks", std::move(blocks_)}}}};
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
        const auto [block, isNew] = blocks_.emplace(row.parameter, Json());
        if (isNew)
            *block = blocksOf(row.parameter, release_.definitions.parameters.text(), lines_);
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
    BlockLines lines_;
    Json rows_ = Json::array();
    Json places_ = Json::array();
    std::map<std::vector<PresetsOnVariant>, std::size_t> placeNumbers_;
    Json sets_ = Json::array();
    std::map<std::vector<std::string>, std::size_t> setNumbers_;
    Json presets_ = Json::array();
    Numbering presetNumbers_;
    Json blocks_ = Json::object();
};

} // namespace

ReleasePage::ReleasePage(const Release& newest)
    : newest_(newest),
      lines_(blockLines(newest.definitions.parameters.text())) {}

void ReleasePage::add(const ReleaseReport& report, const Release& older) {
    releases_.push_back(OlderRelease(report, older).take());
    for (const auto& row : report.rows) {
        for (const auto& name : {row.parameter, row.newName}) {
            const auto [block, isNew] = blocks_.emplace(name, Json());
            if (isNew)
                *block = blocksOf(name, newest_.definitions.parameters.text(), lines_);
        }
    }
}

ExitStatus ReleasePage::write(const Settings& settings, const std::string& suggestion,
                              const std::string& files) {
    auto groups = Json::array();
    auto fates = Json::array();
    for (const auto& [fate, code, text] : fateTexts()) {
        if (groups.empty() || groups.back() != titleOf(fate))
            groups.push_back(titleOf(fate));
        fates.push_back({{"code", code}, {"text", text}, {"group", groups.size() - 1}});
    }
    const Json data{
        {"newest", newest_.name},
        {"parameters", {{"file", newest_.parameterFile}, {"blocks", std::move(blocks_)}}},
        {"groups", std::move(groups)},
        {"fates", std::move(fates)},
        {"releases", std::move(releases_)},
        {"suggestion", suggestion},
        {"files", files}};
    return writePage(*settings.html, releasePage, data,
                     "compare fewer releases, or one variant with --variant", settings.messages);
}

} // namespace morvane::ctl
