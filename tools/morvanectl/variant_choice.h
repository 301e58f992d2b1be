// Which variant of the device a command speaks of: the system arguments that its options, a list of
// named variants or the device itself give.
#pragma once

#include "argument_files.h"
#include "paramdef/system_arguments.h"
#include "settings.h"
#include "text/source_text.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane {
class SystemParameterTable;
} // namespace morvane

namespace morvane::ctl {

/// Reads the list of variants: the file that the settings name, or the one beside the parameter
/// definition file.
/// @return no variants if the settings name no file and there is none; nothing, with a message on
///         standard error, if the file cannot be used.
std::optional<std::vector<NamedVariant>> readNamedVariants(const Settings& settings);

/// The arguments of a named variant, of which those of the settings replace the ones of the same
/// name.
SystemArguments argumentsOf(const NamedVariant& variant, const Settings& settings);

/// The arguments that describe the device: those of the settings, with those of their named
/// variant. Without either, and for the installed definition files, those with which systemd starts
/// the daemon, which standard error says.
/// @param variants what `readNamedVariants` has read.
/// @return nothing, with a message on standard error, if there is no such variant, or if the file
/// of
///         the device's own arguments cannot be used.
std::optional<SystemArguments> chosenArguments(const Settings& settings,
                                               const std::vector<NamedVariant>& variants);

/// A name in an expression that has no value.
struct UndescribedName {
    std::string name;
    SourceText::Place place; ///< of its first use
};

/// The names that expressions of the parameter definitions use although no argument gives them, no
/// parameter has them, and no named variant gives them: mistyped ones, and those of a device that
/// was not described. In order, each once.
std::vector<UndescribedName> undescribedNames(const SystemParameterTable& parameters,
                                              const SystemArguments& arguments,
                                              const std::vector<NamedVariant>& variants);

} // namespace morvane::ctl
