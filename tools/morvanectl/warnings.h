// What may be a mistake in definitions that the daemon accepts.
#pragma once

#include "core/preset_manager.h"
#include "paramdef/system_arguments.h"
#include "paramdef/system_parameter.h"
#include "presetdef/preset_definition.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {

struct Warning {
    enum class File {
        parameters,
        presets
    };

    File file = File::parameters;
    std::uint32_t line = 0; ///< where the construct in question began
    std::string word;       ///< that the caret goes under, on that line or a later one
    std::string text;
    std::optional<std::uint32_t> column{}; ///< of the caret on that line, where it is known

    auto operator<=>(const Warning&) const = default;
};

/// About the parameters that exist on the variant that the system arguments describe.
std::vector<Warning> parameterWarnings(const SystemParameterTable& parameters,
                                       const SystemArguments& arguments);

/// About the presets, on the variant for which the manager was made.
std::vector<Warning> presetWarnings(const PresetDefinitions& presets, const PresetManager& manager);

/// About the translate sections, on the variant for which the manager was made.
std::vector<Warning> translateWarnings(const PresetDefinitions& presets,
                                       const PresetManager& manager);

} // namespace morvane::ctl
