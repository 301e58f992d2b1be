// How the comparison of two releases is written for people and programs.
#pragma once

#include "output.h"
#include "release_comparison.h"

namespace morvane::ctl {

/// Writes a summary by fate, then what becomes of each parameter that is not just kept.
/// @param newer the name of the newer release.
void writeReport(const ReleaseReport& report, const Release& older, const std::string& newer);

/// The whole comparison.
Json jsonOf(const ReleaseReport& report, const Release& older);

} // namespace morvane::ctl
