#include "release_report.h"

#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <numeric>
#include <set>
#include <string_view>

namespace morvane::ctl {

namespace {

constexpr std::array texts{
    FateText{Fate::unlisted, "unlisted", "not defined any more, and not in a removed list"},
    FateText{Fate::absent, "absent", "defined, but no parameter of the variant any more"},
    FateText{Fate::unmapped, "unmapped", "of another number of indices, without an index mapping"},
    FateText{Fate::badMapping, "bad-mapping",
             "with an index mapping of more indices than they have"},
    FateText{Fate::noInstance, "no-instance", "with an index value that is gone"},
    FateText{Fate::unknownKey, "unknown-key", "included, but not on the variant: a load fails"},
    FateText{Fate::badValue, "bad-value", "with values that no range has: a load of one fails"},
    FateText{Fate::removed, "removed", "in a removed list"},
    FateText{Fate::notInPreset, "not-in-preset", "not in the preset any more"},
    FateText{Fate::readOnly, "read-only", "read-only now, and not in the preset"},
    FateText{Fate::setTwice, "set-twice", "become a key that another one becomes"},
    FateText{Fate::undecidedValue, "undecided-value", "with values that parameters decide about"},
    FateText{Fate::asStatus, "as-status", "read-only now: what they show is set"},
    FateText{Fate::valueMapped, "value-mapped", "with values that are mapped"},
    FateText{Fate::renamed, "renamed", "renamed"},
    FateText{Fate::reindexed, "re-indexed", "re-indexed"},
    FateText{Fate::renamedAndReindexed, "renamed-re-indexed", "renamed and re-indexed"},
    FateText{Fate::kept, "kept", "kept"},
    FateText{Fate::added, "new", "reset by a load with defaults"},
    FateText{Fate::addedWithoutDefault, "new-without-default", "without a default"},
};

// The first fate of each group.
constexpr std::array groupTitles{
    std::pair{Fate::unlisted, "lost, which no translate section says"},
    std::pair{Fate::removed, "not loaded, as the definitions say"},
    std::pair{Fate::setTwice, "taken over"},
    std::pair{Fate::added, "new, so that no file has them"},
};

const FateText& textOf(Fate fate) {
    return *std::find_if(texts.begin(), texts.end(),
                         [fate](const FateText& text) { return text.fate == fate; });
}

std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string bracketed(const std::string& text) {
    return text.empty() ? text : " [" + text + "]";
}

// Such as "on 2 of 4: field-*"; empty if it is all of them.
std::string onVariants(const std::vector<std::size_t>& variants, const ReleaseReport& report,
                       const Release& older) {
    const auto all = report.compared.size();
    if (variants.size() == all)
        return {};
    return "on " + std::to_string(variants.size()) + " of " + std::to_string(all) + ": " +
           namesOf(variants, older.variants);
}

// Whether these are all presets of each of the variants.
bool isAll(const std::vector<std::string>& presets, const std::vector<std::size_t>& variants,
           const ReleaseReport& report) {
    return std::all_of(variants.begin(), variants.end(), [&](std::size_t variant) {
        return std::find(report.compared.begin(), report.compared.end(),
                         PresetsOnVariant{variant, presets}) != report.compared.end();
    });
}

/// Writes for people.
class ReportWriter {
public:
    ReportWriter(const ReleaseReport& report, const Release& older)
        : report_(report),
          older_(older) {}

    void writeSummary() const {
        const char* lastTitle = nullptr;
        for (const auto& [fate, code, text] : texts) {
            std::set<std::string_view> parameters;
            std::set<ReleaseRow::Key> keys;
            for (const auto& row : report_.rows) {
                if (row.fate != fate)
                    continue;
                parameters.insert(row.parameter);
                keys.insert(row.keys.begin(), row.keys.end());
            }
            if (parameters.empty())
                continue;
            if (titleOf(fate) != lastTitle)
                std::cout << titleOf(fate) << ":\n";
            lastTitle = titleOf(fate);
            std::cout << "    " << counted(keys.size(), "key") << " of "
                      << counted(parameters.size(), "parameter") << ": " << text << '\n';
        }
    }

    void writeRows() const {
        const FateText* last = nullptr;
        for (const auto& row : report_.rows) {
            if (row.fate == Fate::kept)
                continue;
            const auto& text = textOf(row.fate);
            if (&text != last)
                std::cout << '\n' << text.text << ":\n";
            last = &text;
            std::cout << "    " << keysText(row);
            if (!row.values.empty())
                std::cout << ": " << printableText(shortList(row.values));
            std::cout << printableText(bracketed(placesText(row, report_, older_))) << '\n';
        }
    }

private:
    static std::string keysText(const ReleaseRow& row) {
        const auto& [before, after] = row.keys.front();
        auto text = printableText(before.empty() ? after : before);
        if (!before.empty() && !after.empty() && before != after)
            text += " -> " + printableText(after);
        if (row.keys.size() > 1)
            text += " and " + std::to_string(row.keys.size() - 1) + " more";
        return text;
    }

    const ReleaseReport& report_;
    const Release& older_;
};

Json jsonOf(const std::vector<PresetsOnVariant>& places, const Release& older) {
    auto list = Json::array();
    for (const auto& [variant, presets] : places)
        list.push_back({{"variant", older.variants[variant].name}, {"presets", presets}});
    return list;
}

Json jsonOf(const ReleaseRow& row, const Release& older) {
    auto keys = Json::array();
    for (const auto& [before, after] : row.keys)
        keys.push_back({{"before", before.empty() ? Json() : Json(before)},
                        {"after", after.empty() ? Json() : Json(after)}});
    return {{"fate", textOf(row.fate).code}, {"lost", isLoss(row.fate)},
            {"parameter", row.parameter},    {"values", row.values},
            {"keys", std::move(keys)},       {"places", jsonOf(row.places, older)}};
}

} // namespace

const char* titleOf(Fate fate) {
    const char* title = nullptr;
    for (const auto& [first, text] : groupTitles) {
        if (first <= fate)
            title = text;
    }
    return title;
}

std::span<const FateText> fateTexts() {
    return texts;
}

std::vector<std::string> goneTexts(const ReleaseReport& report, const Release& older) {
    std::vector<std::string> lines;
    for (const auto& name : report.goneVariants)
        lines.push_back("gone: variant " + name);
    std::map<std::string, std::vector<std::size_t>> variantsOf;
    for (const auto& [variant, presets] : report.gonePresets) {
        for (const auto& preset : presets)
            variantsOf[preset].push_back(variant);
    }
    for (const auto& [preset, variants] : variantsOf)
        lines.push_back("gone: preset " + preset + bracketed(onVariants(variants, report, older)));
    return lines;
}

std::string placesText(const ReleaseRow& row, const ReleaseReport& report, const Release& older) {
    if (row.places == report.compared)
        return {};
    std::map<std::vector<std::string>, std::vector<std::size_t>> variantsOf;
    for (const auto& [variant, presets] : row.places)
        variantsOf[presets].push_back(variant);
    std::vector<std::string> places;
    for (const auto& [presets, variants] : variantsOf) {
        const auto on = onVariants(variants, report, older);
        const bool areAll = isAll(presets, variants, report);
        places.push_back((areAll ? "" : "in " + shortList(presets)) +
                         (areAll || on.empty() ? "" : " ") + on);
    }
    return joined(places, "; ");
}

void writeReport(const ReleaseReport& report, const Release& older, const std::string& newer) {
    std::cout << older.name << " -> " << newer << '\n';
    for (const auto& line : goneTexts(report, older))
        std::cout << printableText(line) << '\n';
    const ReportWriter writer(report, older);
    writer.writeSummary();
    writer.writeRows();
}

Json jsonOf(const ReleaseReport& report, const Release& older) {
    auto rows = Json::array();
    for (const auto& row : report.rows)
        rows.push_back(jsonOf(row, older));
    return {{"release", older.name},
            {"lost", report.hasLoss()},
            {"goneVariants", report.goneVariants},
            {"gonePresets", jsonOf(report.gonePresets, older)},
            {"rows", std::move(rows)}};
}

} // namespace morvane::ctl
