// morvanectl translate: what becomes of each line of a preset data file when it is loaded, and the
// file that this release would have stored instead.

#include "commands.h"
#include "data_check.h"
#include "output.h"
#include "stored_file.h"
#include "variant.h"

#include <iostream>
#include <map>

namespace morvane::ctl {

namespace {

struct TranslatedLine {
    DataLine place; ///< its text is gone
    std::string before;
    LineOutcome outcome;
};

std::string lineOf(const LineOutcome::Setting& setting) {
    return setting.key + "=" + setting.value;
}

void writeLines(const std::vector<TranslatedLine>& lines) {
    for (const auto& [place, before, outcome] : lines) {
        std::cout << place.number;
        if (place.column > 0)
            std::cout << ':' << place.column + 1;
        std::cout << ": " << before;
        if (outcome.set && lineOf(*outcome.set) != before)
            std::cout << " -> " << lineOf(*outcome.set);
        std::cout << " (" << outcome.what << ")\n";
    }
}

void writeLinesAsJson(const std::vector<TranslatedLine>& lines) {
    auto list = Json::array();
    for (const auto& [place, before, outcome] : lines) {
        list.push_back({{"line", place.number},
                        {"column", place.column + 1},
                        {"before", before},
                        {"after", outcome.set ? Json(lineOf(*outcome.set)) : Json()},
                        {"what", outcome.what}});
    }
    writeJson(list);
}

// Of two lines with one key, the later counts.
StoredValues valuesOf(const std::vector<TranslatedLine>& lines) {
    StoredValues values;
    for (const auto& line : lines) {
        if (line.outcome.set)
            values[line.outcome.set->key] = line.outcome.set->value;
    }
    return values;
}

} // namespace

ExitStatus translateFile(const Settings& settings) {
    const auto variant =
        settings.preset.empty() ? readVariant(settings) : readVariantWithPreset(settings);
    const auto file = variant ? fileToLoad(settings.file, settings.messages) : std::nullopt;
    if (!file)
        return ExitStatus::error;
    DataCheck check(*variant, settings.preset, *file, Reports::on);
    std::vector<TranslatedLine> lines;
    const auto add = [&](const DataLine& line) {
        lines.push_back({line, std::string(trimEnd(line.text)), check.check(line)});
    };
    if (!readDataLines(*file, settings.messages, add))
        return ExitStatus::error;
    settings.json ? writeLinesAsJson(lines) : writeLines(lines);
    for (const auto& line : lines) {
        for (const auto& finding : line.outcome.others)
            noteFinding(finding, settings.messages);
    }
    return settings.output.empty()
               ? ExitStatus::yes
               : writeStoredFile(settings.output, *file, valuesOf(lines), settings.messages);
}

} // namespace morvane::ctl
