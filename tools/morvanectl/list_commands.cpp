// The subcommands that list presets and keys.

#include "commands.h"
#include "output.h"
#include "variant.h"

namespace morvane::ctl {

ExitStatus listPresets(const Settings& settings) {
    const auto variant = readVariant(settings);
    if (!variant)
        return ExitStatus::error;
    std::vector<std::string> names;
    for (const auto& [name, keys] : variant->manager.presets())
        names.push_back(name);
    writeList(names, settings.json);
    return ExitStatus::yes;
}

ExitStatus listKeys(const Settings& settings) {
    const auto variant = readVariantWithPreset(settings);
    if (!variant)
        return ExitStatus::error;
    writeList(variant->manager.findPreset(settings.preset)->strings(), settings.json);
    return ExitStatus::yes;
}

} // namespace morvane::ctl
