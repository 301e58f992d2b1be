#include "variant.h"

#include "definition_errors.h"
#include "output.h"
#include "variant_choice.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace morvane::ctl {

namespace {

std::string namesOf(const std::vector<UndescribedName>& undescribed) {
    std::vector<std::string> names;
    std::transform(undescribed.begin(), undescribed.end(), std::back_inserter(names),
                   [](const UndescribedName& name) { return name.name; });
    return joined(names, ", ");
}

// The definitions, after what is wrong in them has been said.
std::optional<Definitions> usableDefinitions(const Settings& settings) {
    auto files = readDefinitionFiles(settings);
    for (const auto& error : files.errors)
        report(error, settings.messages);
    return std::move(files.definitions);
}

} // namespace

std::optional<Variant> readVariant(const Settings& settings) {
    auto definitions = usableDefinitions(settings);
    if (!definitions)
        return std::nullopt;
    const auto named = readNamedVariants(settings);
    auto arguments = named ? chosenArguments(settings, *named) : std::nullopt;
    if (!arguments)
        return std::nullopt;
    const auto unknown = undescribedNames(definitions->parameters, *arguments, *named);
    if (!unknown.empty())
        settings.messages.warn("nothing gives a value to " + namesOf(unknown) + ", which " +
                               settings.paramDefFile +
                               " uses; describe the device with --system or --variant");
    PresetManager manager(*definitions, *arguments);
    return Variant{*std::move(definitions), *std::move(arguments), std::move(manager)};
}

std::optional<Variant> readVariantWithPreset(const Settings& settings) {
    auto variant = readVariant(settings);
    if (variant && !variant->manager.is_preset(settings.preset)) {
        settings.messages.fail(
            "no preset " + settings.preset +
            " covers a key on this variant; see: morvanectl presets, morvanectl check");
        return std::nullopt;
    }
    return variant;
}

} // namespace morvane::ctl
