// The values that the ranges of a parameter allow on this device.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/system_arguments.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace morvane {

class SystemParameterTable;
struct RangeItem;
struct SystemParameter;

/// All numbers from `low` to `high`; none if `high` is below `low`.
struct NumberSpan {
    std::int32_t low = 0;
    std::int32_t high = 0;

    bool operator==(const NumberSpan&) const = default;
};

/// What one item of a range stands for.
using ValidValue = std::variant<NumberSpan, std::string>;

/// Whether an item stands for a value as written in preset data files: a text stands for itself, a
/// span for its numbers, in any notation.
bool standsFor(const ValidValue& item, std::string_view value);

/// What an item stands for.
/// @return nothing if a bound cannot be computed, or is a text where a number is needed.
std::optional<ValidValue> itemValue(const RangeItem& item, const SystemArguments& arguments);

/// The items of those `rangeValid` attributes whose condition holds, in file order. An item that
/// cannot be computed is left out.
std::vector<ValidValue> validValues(const SystemParameter& parameter,
                                    const SystemParameterTable& parameters,
                                    const SystemArguments& arguments);

/// What a parameter may be set to.
struct AcceptedValues {
    bool isRanged = false; ///< without ranges every value is accepted
    std::vector<ValidValue> values;

    /// Whether a value, as written in preset data files, is accepted.
    bool accepts(std::string_view value) const;
};

AcceptedValues acceptedValues(const SystemParameter& parameter,
                              const SystemParameterTable& parameters,
                              const SystemArguments& arguments);

} // namespace morvane
