#include "described_variants.h"

#include "variant_choice.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace morvane::ctl {

namespace {

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

std::vector<DescribedVariant> combinedVariants(const Settings& settings) {
    std::vector<DescribedVariant> variants;
    for (const auto& combination : combinations(settings.axes)) {
        variants.push_back({joined(combination, " "), {}});
        for (const auto& argument : combination)
            addSystemArgument(variants.back().arguments, argument);
        variants.back().arguments.insert(settings.systemArguments.begin(),
                                         settings.systemArguments.end());
    }
    return variants;
}

// What several names begin with, and no name of another variant, with a "*"; else nothing.
std::string patternFor(const std::vector<std::string>& names,
                       const std::vector<DescribedVariant>& variants) {
    const auto& [first, last] = std::minmax_element(names.begin(), names.end());
    const auto differing = std::mismatch(first->begin(), first->end(), last->begin(), last->end());
    const std::string prefix(first->begin(), differing.first);
    const auto count =
        std::count_if(variants.begin(), variants.end(), [&](const DescribedVariant& variant) {
            return variant.name.starts_with(prefix);
        });
    const bool isTheirs = static_cast<std::size_t>(count) == names.size();
    return names.size() > 1 && isTheirs ? prefix + "*" : "";
}

} // namespace

std::optional<std::vector<DescribedVariant>>
describedVariants(const Settings& settings, const std::vector<NamedVariant>& named) {
    if (!settings.axes.empty())
        return combinedVariants(settings);
    std::vector<DescribedVariant> variants;
    if (settings.allVariants) {
        for (const auto& variant : named)
            variants.push_back({variant.name, argumentsOf(variant, settings)});
        if (!variants.empty())
            return variants;
        settings.messages.fail(
            "there are no named variants; see --variants, or give --all-variants system arguments "
            "with all their values");
        return std::nullopt;
    }
    auto arguments = chosenArguments(settings, named);
    if (!arguments)
        return std::nullopt;
    variants.push_back({settings.variant, *std::move(arguments)});
    return variants;
}

std::string namesOf(std::span<const std::size_t> numbers,
                    const std::vector<DescribedVariant>& variants) {
    std::vector<std::string> names;
    std::transform(numbers.begin(), numbers.end(), std::back_inserter(names),
                   [&](std::size_t number) { return variants[number].name; });
    const auto pattern = patternFor(names, variants);
    return pattern.empty() ? joined(names, ", ") : pattern;
}

} // namespace morvane::ctl
