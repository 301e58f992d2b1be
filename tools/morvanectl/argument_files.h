// The files that give the system arguments of a variant: a list of named variants, and the device's
// own environment file, from which systemd starts the daemon.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// A line "NAME: argument argument ..." of a list of variants.
struct NamedVariant {
    std::string name;
    std::uint32_t line = 0;             ///< counted from 1
    std::vector<std::string> arguments; ///< each is NAME=VALUE

    bool operator==(const NamedVariant&) const = default;
};

/// What is wrong with a list of variants.
struct VariantsProblem {
    std::uint32_t line = 0;
    std::uint32_t column = 0; ///< byte offset, counted from 0
    std::string text;

    bool operator==(const VariantsProblem&) const = default;
};

/// Reads a list of variants. Blank lines, and those that begin with "#", are comments. Arguments
/// are words as `commandLineWords` splits them.
///
/// @param variants gets the variants in the order of the file.
/// @return the first problem: a line without a name, a name that was there already, something that
///         is no argument, or two different arguments of one name.
std::optional<VariantsProblem> parseVariants(std::string_view text,
                                             std::vector<NamedVariant>& variants);

/// The two arguments that give one name different values, of which the daemon would take the first.
/// @return nothing if there are none.
struct ArgumentConflict {
    std::string first;
    std::string second;
};
std::optional<ArgumentConflict> conflictOf(const std::vector<std::string>& arguments);

/// The words of a variable's value, as systemd splits it for `$VARIABLE` on a command line: at
/// white space that is not in quotes. A backslash makes the next character an ordinary one, in
/// quotes too.
std::vector<std::string> commandLineWords(std::string_view value);

/// The value of a variable in a text that systemd reads as an `EnvironmentFile`; of two assignments
/// the last counts.
/// @return nothing without an assignment.
std::optional<std::string> environmentValue(std::string_view text, std::string_view name);

} // namespace morvane::ctl
