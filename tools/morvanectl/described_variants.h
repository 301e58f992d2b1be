// The variants that a command speaks of when it may speak of several, each with its name.
#pragma once

#include "argument_files.h"
#include "paramdef/system_arguments.h"
#include "settings.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace morvane::ctl {

struct DescribedVariant {
    std::string name; ///< of a combination, its arguments; empty if the only one has no name
    SystemArguments arguments;
};

/// The variants that the settings ask for: every combination of their axes, all named variants, or
/// the one that `chosenArguments` finds.
/// @param named what `readNamedVariants` has read.
/// @return at least one; nothing, with a message on standard error, if they ask for what there is
///         not.
std::optional<std::vector<DescribedVariant>>
describedVariants(const Settings& settings, const std::vector<NamedVariant>& named);

/// The names of some of several variants: what they begin with, and no name of another, with a "*",
/// or else all of them with commas between.
/// @param numbers of the variants, from 0; at least one.
std::string namesOf(std::span<const std::size_t> numbers,
                    const std::vector<DescribedVariant>& variants);

} // namespace morvane::ctl
