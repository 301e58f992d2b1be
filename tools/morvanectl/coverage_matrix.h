// How many keys of each parameter each preset covers, on one variant of the device or on several.
#pragma once

#include "core/definitions.h"
#include "described_variants.h"
#include "paramdef/system_parameter.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// The keys of a parameter that a preset covers on a variant. Their sum over all parameters is the
/// number of keys of the preset.
struct CoveredKeys {
    std::size_t own = 0; ///< those that the parameter has
    std::size_t unknown =
        0; ///< with index values that it does not have: an include list names them

    bool operator==(const CoveredKeys&) const = default;
};

/// A preset, or what of it is shown. Places count from 0, in the order of the matrix.
class PresetColumn {
public:
    PresetColumn(std::size_t parameters, std::size_t variants)
        : variants_(variants),
          covered_(parameters * variants),
          differs_(parameters) {}

    const CoveredKeys& covered(std::size_t parameter, std::size_t variant) const {
        return covered_[parameter * variants_ + variant];
    }
    CoveredKeys& covered(std::size_t parameter, std::size_t variant) {
        return covered_[parameter * variants_ + variant];
    }

    /// Whether what the preset covers of the parameter is not the same on all variants: other keys,
    /// or the same ones of a parameter that has others.
    bool differs(std::size_t parameter) const { return differs_[parameter]; }
    void setDiffers(std::size_t parameter) { differs_[parameter] = true; }

private:
    std::size_t variants_;
    std::vector<CoveredKeys> covered_;
    std::vector<bool> differs_;
};

/// A parameter that presets can cover: a read-only or a read-write one.
struct ParameterRow {
    const SystemParameter* definition;
    /// By variant: the number of its keys; nothing where it does not exist.
    std::vector<std::optional<std::size_t>> keys;
    bool differs = false; ///< its keys are not the same on all variants

    bool exists() const;
};

/// Borrows from the definitions.
struct CoverageMatrix {
    std::vector<DescribedVariant> variants;
    std::vector<ParameterRow> parameters; ///< in order of their names; some may exist nowhere
    std::map<std::string, PresetColumn, std::less<>> presets; ///< that exist on some variant

    /// Whether a preset covers the parameter differently on some variants.
    bool differs(std::size_t parameter) const;
};

/// What of a matrix is asked for.
struct MatrixScope {
    std::string preset;  ///< empty for all
    std::string pattern; ///< of the parameters' names, as shells have them; empty for all
};

/// Derives the tables of each variant as the daemon does, one variant after the other.
/// @param definitions borrowed for the life of the matrix.
/// @param variants    at least one.
CoverageMatrix coverageMatrix(const Definitions& definitions,
                              std::vector<DescribedVariant> variants, const MatrixScope& scope);

/// The word for how much of a parameter is covered.
/// @param keys of the parameter.
/// @return "all" or "some" of its keys, or "none"; "none" of a parameter without keys, too.
const char* extentOf(const CoveredKeys& covered, std::size_t keys);

} // namespace morvane::ctl
