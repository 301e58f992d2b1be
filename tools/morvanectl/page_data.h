// What a page about a matrix carries: for every key of every cell the reasons why the preset covers
// it or not, and for every parameter what its conditions came to. The page evaluates nothing.
#pragma once

#include "core/definitions.h"
#include "coverage_matrix.h"
#include "output.h"

#include <cstddef>
#include <span>

namespace morvane::ctl {

/// The answers for the parameters that are shown, as one value. What is the same for many of them
/// stands there once, so that a hundred presets of ten thousand parameters take a few megabytes.
///
///     variants    [{name, arguments}]
///     indices     [{name, blocks, values, conditions}]
///                 values: by variant, its values in words, or null where it does not exist
///     parameters  [{name, access, blocks, indices, keys, groups, conditions, differing}]
///                 blocks: [{line, text}], the lines that define it
///                 indices: numbers of indices
///                 keys: by variant, how many it has, or null where it does not exist
///                 groups: by variant, the number of those with the same indices, or null
///                 conditions: [{line, outcomes}], where outcomes are by variant numbers of texts
///                 differing: the numbers of the presets that cover it differently on some variant
///     presets     [{name, on}], where on is, by variant, null if the preset covers no key, or
///                 {line, parts: [{line, text}], none, groups, items}
///                 none: what stands for no part, of read-only and of other parameters, {ro, rw}
///                 groups: [[number of a group, number of a decision], ...]
///                 items: the same by the number of a parameter; stands for those that have one
///     decisions   [{own, unknown, keys: [[standing, [part, ...], [ending, ...]], ...]}]
///                 own, unknown: how many are covered, as in `CoveredKeys`
///                 standing: "in" the preset, "out" of it, or "unknown": in it with an index value
///                 that does not exist
///                 ending: what follows the parameter's name in the key
///     texts       of conditions, with their outcomes
///
/// Numbers count from 0 in the arrays above; a part is one of the preset's on that variant.
///
/// @param definitions those of the matrix.
/// @param parameters  to be shown, by their places in the matrix.
Json pageData(const Definitions& definitions, const CoverageMatrix& matrix,
              std::span<const std::size_t> parameters);

} // namespace morvane::ctl
