#include "variant.h"

#include "output.h"
#include "variant_choice.h"

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace morvane::ctl {

namespace {

// The daemon does not say which definition file it cannot read.
bool isReadable(const std::string& path) {
    if (access(path.c_str(), R_OK) == 0)
        return true;
    fail("cannot read " + path + "; name the definition files with --parameters and --presets");
    return false;
}

} // namespace

std::optional<Definitions> readBothFiles(const Settings& settings) {
    if (!isReadable(settings.paramDefFile) || !isReadable(settings.presetDefFile))
        return std::nullopt;
    auto definitions = readDefinitions(settings.paramDefFile, settings.presetDefFile);
    if (!definitions)
        fail("cannot use " + settings.paramDefFile + " and " + settings.presetDefFile +
             "; without a reason above, one is empty or ends inside a block");
    return definitions;
}

std::optional<Variant> readVariant(const Settings& settings) {
    auto definitions = readBothFiles(settings);
    if (!definitions)
        return std::nullopt;
    const auto named = readNamedVariants(settings);
    auto arguments = named ? chosenArguments(settings, *named) : std::nullopt;
    if (!arguments)
        return std::nullopt;
    const auto unknown = undescribedNames(definitions->parameters, *arguments, *named);
    if (!unknown.empty())
        note("warning: nothing gives a value to " + joined(unknown, ", ") + ", which " +
             settings.paramDefFile + " uses; describe the device with --system or --variant");
    PresetManager manager(*definitions, *arguments);
    return Variant{*std::move(definitions), *std::move(arguments), std::move(manager)};
}

std::optional<Variant> readVariantWithPreset(const Settings& settings) {
    auto variant = readVariant(settings);
    if (variant && !variant->manager.is_preset(settings.preset)) {
        fail("no preset " + settings.preset +
             " covers a key on this variant; see: morvanectl presets, morvanectl check");
        return std::nullopt;
    }
    return variant;
}

OwnedStream openDataFile(const std::string& file) {
    struct stat status {};
    OwnedStream stream;
    if (stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)) // a FIFO would block
        stream.reset(std::fopen(file.c_str(), "r"));
    if (!stream)
        fail("cannot read " + file);
    return stream;
}

} // namespace morvane::ctl
