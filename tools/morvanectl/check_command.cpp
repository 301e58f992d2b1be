// morvanectl check: the errors for which the daemon refuses the definition files, and what else may
// be a mistake, on one variant of the device or on many.

#include "commands.h"
#include "definition_errors.h"
#include "described_variants.h"
#include "output.h"
#include "variant_choice.h"
#include "warnings.h"

#include <iostream>
#include <map>
#include <numeric>

namespace morvane::ctl {

namespace {

/// Warnings with the numbers of the variants on which they occur.
using Occurrences = std::map<Warning, std::vector<std::size_t>>;

std::vector<Warning> warningsOn(const DescribedVariant& variant, const Definitions& definitions,
                                const std::vector<NamedVariant>& namedVariants) {
    const auto& [parameters, presets] = definitions;
    const PresetManager manager(definitions, variant.arguments);
    WarningList undescribed(Warning::File::parameters, parameters.text());
    for (const auto& [name, place] : undescribedNames(parameters, variant.arguments, namedVariants))
        undescribed.addAbsence(place, "no-value",
                               "nothing gives a value to " + name +
                                   ", so what uses it cannot be computed");
    std::vector<Warning> all;
    for (const auto& warnings :
         {undescribed.take(), parameterWarnings(parameters, variant.arguments),
          presetWarnings(presets, manager), translateWarnings(presets, manager)})
        all.insert(all.end(), warnings.begin(), warnings.end());
    return all;
}

/// What a check has found, ready to be written.
class Report {
public:
    /// All are borrowed for the object's life.
    Report(const Settings& settings, const Definitions& definitions,
           const std::vector<DescribedVariant>& variants)
        : settings_(settings),
          parameters_(settings.paramDefFile, definitions.parameters.text()),
          presets_(settings.presetDefFile, *definitions.presets.text),
          variants_(variants) {}

    void add(const Warning& warning, const std::vector<std::size_t>& numbers) {
        const bool everywhere = numbers.size() == variants_.size();
        const bool counts = everywhere || !warning.isAbsence;
        if (!counts && !settings_.verbose)
            return;
        const auto& file = warning.file == Warning::File::parameters ? parameters_ : presets_;
        auto finding = file.at(warning.place, counts ? Severity::warning : Severity::note,
                               warning.code, warning.text);
        for (const auto number : numbers) {
            if (variants_.size() > 1)
                finding.variants.push_back(variants_[number].name);
        }
        isWarned_ = isWarned_ || counts;
        show(finding, everywhere ? "" : " [" + whereText(numbers) + "]");
    }

    bool isWarned() const { return isWarned_; }
    const Json& list() const { return list_; }

private:
    void show(const Finding& finding, const std::string& where) {
        if (settings_.json)
            appendJson(list_, finding);
        else if (finding.severity == Severity::note)
            writeHead(std::cout, finding, where);
        else
            write(std::cout, finding, where);
    }

    // Such as "on 2 of 3: field-*".
    std::string whereText(const std::vector<std::size_t>& numbers) const {
        return "on " + std::to_string(numbers.size()) + " of " + std::to_string(variants_.size()) +
               ": " + namesOf(numbers, variants_);
    }

    const Settings& settings_;
    SourceFile parameters_;
    SourceFile presets_;
    const std::vector<DescribedVariant>& variants_;
    Json list_ = Json::array();
    bool isWarned_ = false;
};

Occurrences occurrencesOf(const Definitions& definitions,
                          const std::vector<DescribedVariant>& variants,
                          const std::vector<NamedVariant>& namedVariants) {
    Occurrences occurrences;
    for (std::size_t number = 0; number < variants.size(); ++number) {
        for (const auto& warning : warningsOn(variants[number], definitions, namedVariants)) {
            auto& numbers = occurrences[warning];
            if (numbers.empty() || numbers.back() != number)
                numbers.push_back(number);
        }
    }
    std::vector<std::size_t> all(variants.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    for (const auto& warning : spellingWarnings(definitions.parameters, definitions.presets))
        occurrences[warning] = all;
    return occurrences;
}

ExitStatus checkAsDaemon(const Settings& settings) {
    return readDefinitions(settings.paramDefFile, settings.presetDefFile) ? ExitStatus::yes
                                                                          : ExitStatus::error;
}

ExitStatus showErrors(const Settings& settings, const std::vector<Finding>& errors) {
    auto list = Json::array();
    for (const auto& error : errors) {
        if (settings.json)
            appendJson(list, error);
        else
            write(std::cout, error);
    }
    if (settings.json && !errors.empty())
        writeJson(list);
    return ExitStatus::error;
}

} // namespace

ExitStatus checkDefinitions(const Settings& settings) {
    if (settings.asDaemon)
        return checkAsDaemon(settings);
    const auto [definitions, errors] = readDefinitionFiles(settings);
    if (!definitions || !errors.empty())
        return showErrors(settings, errors);
    const auto namedVariants = readNamedVariants(settings);
    const auto variants =
        namedVariants ? describedVariants(settings, *namedVariants) : std::nullopt;
    if (!variants)
        return ExitStatus::error;
    Report report(settings, *definitions, *variants);
    for (const auto& [warning, numbers] : occurrencesOf(*definitions, *variants, *namedVariants))
        report.add(warning, numbers);
    if (settings.json)
        writeJson(report.list());
    return settings.strict && report.isWarned() ? ExitStatus::no : ExitStatus::yes;
}

} // namespace morvane::ctl
