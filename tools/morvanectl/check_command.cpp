// morvanectl check: the errors for which the daemon refuses the definition files, and what else may
// be a mistake, on one variant of the device or on many.

#include "commands.h"
#include "definition_errors.h"
#include "output.h"
#include "variant_choice.h"
#include "warnings.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <map>
#include <numeric>

namespace morvane::ctl {

namespace {

/// Warnings with the numbers of the variants on which they occur.
using Occurrences = std::map<Warning, std::vector<std::size_t>>;

/// Every combination of the values of the axes, as system arguments, first name first.
std::vector<std::vector<std::string>> combinations(const std::vector<VariantAxis>& axes) {
    std::vector<std::vector<std::string>> all{{}};
    for (const auto& [name, values] : axes) {
        std::vector<std::vector<std::string>> longer;
        for (const auto& shorter : all) {
            for (const auto& value : values) {
                longer.push_back(shorter);
                longer.back().push_back(std::string(name).append("=").append(value));
            }
        }
        all = std::move(longer);
    }
    return all;
}

/// One of the variants that are checked.
struct CheckedVariant {
    std::string name; ///< empty if it is the only one
    SystemArguments arguments;
};

std::vector<CheckedVariant> combinedVariants(const Settings& settings) {
    std::vector<CheckedVariant> variants;
    for (const auto& combination : combinations(settings.axes)) {
        variants.push_back({joined(combination, " "), {}});
        for (const auto& argument : combination)
            addSystemArgument(variants.back().arguments, argument);
        variants.back().arguments.insert(settings.systemArguments.begin(),
                                         settings.systemArguments.end());
    }
    return variants;
}

// Nothing, with a message, if the settings ask for what there is not.
std::optional<std::vector<CheckedVariant>>
checkedVariants(const Settings& settings, const std::vector<NamedVariant>& namedVariants) {
    if (!settings.axes.empty())
        return combinedVariants(settings);
    std::vector<CheckedVariant> variants;
    if (settings.allVariants) {
        for (const auto& named : namedVariants)
            variants.push_back({named.name, argumentsOf(named, settings)});
        if (!variants.empty())
            return variants;
        settings.messages.fail(
            "there are no named variants; see --variants, or give --all-variants system arguments "
            "with all their values");
        return std::nullopt;
    }
    auto arguments = chosenArguments(settings, namedVariants);
    if (!arguments)
        return std::nullopt;
    variants.push_back({"", *std::move(arguments)});
    return variants;
}

std::vector<Warning> warningsOn(const CheckedVariant& variant, const Definitions& definitions,
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
           const std::vector<CheckedVariant>& variants)
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
        std::vector<std::string> names;
        std::transform(numbers.begin(), numbers.end(), std::back_inserter(names),
                       [&](std::size_t number) { return variants_[number].name; });
        const auto pattern = patternFor(names);
        return "on " + std::to_string(numbers.size()) + " of " + std::to_string(variants_.size()) +
               ": " + (pattern.empty() ? joined(names, ", ") : pattern);
    }

    // What several names begin with, and no name of another variant, with a "*"; else nothing.
    std::string patternFor(const std::vector<std::string>& names) const {
        const auto& [first, last] = std::minmax_element(names.begin(), names.end());
        const auto differing =
            std::mismatch(first->begin(), first->end(), last->begin(), last->end());
        const std::string prefix(first->begin(), differing.first);
        const auto count =
            std::count_if(variants_.begin(), variants_.end(), [&](const CheckedVariant& variant) {
                return variant.name.starts_with(prefix);
            });
        const bool isTheirs = static_cast<std::size_t>(count) == names.size();
        return names.size() > 1 && isTheirs ? prefix + "*" : "";
    }

    const Settings& settings_;
    SourceFile parameters_;
    SourceFile presets_;
    const std::vector<CheckedVariant>& variants_;
    Json list_ = Json::array();
    bool isWarned_ = false;
};

Occurrences occurrencesOf(const Definitions& definitions,
                          const std::vector<CheckedVariant>& variants,
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
    const auto variants = namedVariants ? checkedVariants(settings, *namedVariants) : std::nullopt;
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
