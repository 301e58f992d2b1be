// What may be a mistake in definitions that the daemon accepts.
#pragma once

#include "core/preset_manager.h"
#include "paramdef/system_arguments.h"
#include "paramdef/system_parameter.h"
#include "presetdef/preset_definition.h"
#include "text/source_text.h"

#include <compare>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// Ordered as they are shown.
struct Warning {
    enum class File {
        parameters,
        presets
    };

    File file = File::parameters;
    SourceText::Place place; ///< of the word in question
    std::string code;        ///< one word, for scripts
    std::string text;
    /// It says that something is not there on a variant, which is no mistake as long as it is there
    /// on another.
    bool isAbsence = false;

    auto operator<=>(const Warning&) const = default;
};

/// Collects the warnings about one file.
class WarningList {
public:
    /// @param text of the file; borrowed for the list's life.
    WarningList(Warning::File file, const SourceText& text) : file_(file), text_(text) {}

    void add(SourceText::Place place, std::string_view code, std::string text);

    /// @param word where the caret goes: a text that stands in the file.
    void add(std::string_view word, std::string_view code, std::string text);

    /// As above, about something that is not there on this variant.
    void addAbsence(SourceText::Place place, std::string_view code, std::string text);
    void addAbsence(std::string_view word, std::string_view code, std::string text);

    std::vector<Warning> take() { return std::move(warnings_); }

private:
    SourceText::Place placeOf(std::string_view word) const;

    Warning::File file_;
    const SourceText& text_;
    std::vector<Warning> warnings_;
};

/// About the parameters that exist on the variant that the system arguments describe.
std::vector<Warning> parameterWarnings(const SystemParameterTable& parameters,
                                       const SystemArguments& arguments);

/// About the presets, on the variant for which the manager was made.
std::vector<Warning> presetWarnings(const PresetDefinitions& presets, const PresetManager& manager);

/// About the translate sections, on the variant for which the manager was made.
std::vector<Warning> translateWarnings(const PresetDefinitions& presets,
                                       const PresetManager& manager);

/// About what both files say, whatever the variant.
std::vector<Warning> spellingWarnings(const SystemParameterTable& parameters,
                                      const PresetDefinitions& presets);

} // namespace morvane::ctl
