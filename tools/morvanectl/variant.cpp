#include "variant.h"

#include "definition_errors.h"
#include "output.h"
#include "variant_choice.h"

#include <set>
#include <string>
#include <utility>

namespace morvane::ctl {

namespace {

// Says which names have no value on one of the variants.
void warnOfUndescribed(const Settings& settings, const DescribedDevice& device,
                       const std::vector<NamedVariant>& named) {
    std::set<std::string> names;
    for (const auto& variant : device.variants) {
        for (const auto& [name, place] :
             undescribedNames(device.definitions.parameters, variant.arguments, named))
            names.insert(name);
    }
    if (!names.empty())
        settings.messages.warn("nothing gives a value to " +
                               joined(std::vector(names.begin(), names.end()), ", ") + ", which " +
                               settings.paramDefFile +
                               " uses; describe the device with --system or --variant");
}

// The definitions, after what is wrong in them has been said.
std::optional<Definitions> usableDefinitions(const Settings& settings) {
    auto files = readDefinitionFiles(settings);
    for (const auto& error : files.errors)
        report(error, settings.messages);
    return std::move(files.definitions);
}

} // namespace

std::optional<DescribedDevice> readDevice(const Settings& settings) {
    auto definitions = usableDefinitions(settings);
    if (!definitions)
        return std::nullopt;
    const auto named = readNamedVariants(settings);
    auto variants = named ? describedVariants(settings, *named) : std::nullopt;
    if (!variants)
        return std::nullopt;
    DescribedDevice device{*std::move(definitions), *std::move(variants)};
    warnOfUndescribed(settings, device, *named);
    return device;
}

std::optional<Variant> readVariant(const Settings& settings) {
    auto device = readDevice(settings);
    if (!device)
        return std::nullopt;
    auto& arguments = device->variants.front().arguments;
    PresetManager manager(device->definitions, arguments);
    return Variant{std::move(device->definitions), std::move(arguments), std::move(manager)};
}

std::optional<Variant> readVariantWithPreset(const Settings& settings) {
    auto variant = readVariant(settings);
    if (variant && !variant->manager.is_preset(settings.preset)) {
        failWithoutPreset(settings, "this variant");
        return std::nullopt;
    }
    return variant;
}

ExitStatus failWithoutPreset(const Settings& settings, const std::string& where) {
    return settings.messages.fail("no preset " + settings.preset + " covers a key on " + where +
                                  "; see: morvanectl presets, morvanectl check");
}

} // namespace morvane::ctl
