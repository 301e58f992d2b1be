// Guesses the name that was meant by one that is not known.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace morvane::ctl {

/// @return the candidate that is nearest to the name, by the number of bytes to be inserted,
///         removed, replaced or exchanged with their neighbour, if those are at most a third of the
///         name, or one; of several the first. Else an empty text.
std::string nearest(std::string_view name, std::span<const std::string_view> candidates);

/// "did you mean X?", or an empty text.
std::string suggestion(std::string_view name, std::span<const std::string_view> candidates);

} // namespace morvane::ctl
