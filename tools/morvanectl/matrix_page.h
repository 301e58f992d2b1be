// The matrix of presets and parameters as a page for a browser.
#pragma once

#include "core/definitions.h"
#include "coverage_matrix.h"
#include "settings.h"

#include <cstddef>
#include <span>

namespace morvane::ctl {

/// Writes one file that needs no other and no network: the table, and for each cell why the preset
/// covers a key or not. Fails if it would have more than 20 MB.
/// @param parameters to be shown, by their places in the matrix.
/// @return yes, or error with a message on standard error.
ExitStatus writeMatrixPage(const Settings& settings, const Definitions& definitions,
                           const CoverageMatrix& matrix, std::span<const std::size_t> parameters);

} // namespace morvane::ctl
