// morvanectl validate: what a load would not take of a preset data file, and what the Parameter
// Handler would refuse of the rest.

#include "commands.h"
#include "data_check.h"
#include "output.h"
#include "variant.h"

#include <algorithm>
#include <iostream>

namespace morvane::ctl {

ExitStatus validateFile(const Settings& settings) {
    const auto variant =
        settings.preset.empty() ? readVariant(settings) : readVariantWithPreset(settings);
    const auto file = variant ? fileToLoad(settings.file, settings.messages) : std::nullopt;
    if (!file)
        return ExitStatus::error;
    DataCheck check(*variant, settings.preset, *file, Reports::off);
    std::vector<Finding> findings;
    const auto add = [&](const DataLine& line) {
        for (auto& finding : check.check(line).findings())
            findings.push_back(std::move(finding));
    };
    if (!readDataLines(*file, settings.messages, add))
        return ExitStatus::error;
    auto list = Json::array();
    for (const auto& finding : findings)
        settings.json ? appendJson(list, finding) : write(std::cout, finding);
    if (settings.json)
        writeJson(list);
    const bool isFaulty = std::any_of(findings.begin(), findings.end(), [](const auto& finding) {
        return finding.severity == Severity::warning;
    });
    return isFaulty ? ExitStatus::no : ExitStatus::yes;
}

} // namespace morvane::ctl
