// How the comparison of two releases is written for people and programs.
#pragma once

#include "output.h"
#include "release_comparison.h"

#include <span>
#include <string>
#include <vector>

namespace morvane::ctl {

/// How a fate is called.
struct FateText {
    Fate fate;
    const char* code; ///< for scripts
    const char* text;
};

/// All of them, in their order.
std::span<const FateText> fateTexts();

/// What a fate has in common with those around it.
const char* titleOf(Fate fate);

/// The variants and presets that a newer release does not have, a line for each.
std::vector<std::string> goneTexts(const ReleaseReport& report, const Release& older);

/// The presets and variants that a row is about, in words; empty if these are all that were
/// compared.
std::string placesText(const ReleaseRow& row, const ReleaseReport& report, const Release& older);

/// Writes a summary by fate, then what becomes of each parameter that is not just kept.
/// @param newer the name of the newer release.
void writeReport(const ReleaseReport& report, const Release& older, const std::string& newer);

/// The whole comparison.
Json jsonOf(const ReleaseReport& report, const Release& older);

} // namespace morvane::ctl
