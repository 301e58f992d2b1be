// The matrix of presets and parameters as a table: on a terminal in blocks that fit its width, else
// with one tab between the columns, for cut, grep and diff.
#pragma once

#include "coverage_matrix.h"

#include <cstddef>
#include <span>

namespace morvane::ctl {

/// Writes a line for each parameter to standard output; of several variants, a line for each group
/// of those that have the same cells. On a terminal, a legend follows. Nothing for no parameter.
/// @param parameters to be shown, by their places in the matrix.
void writeTable(const CoverageMatrix& matrix, std::span<const std::size_t> parameters);

} // namespace morvane::ctl
