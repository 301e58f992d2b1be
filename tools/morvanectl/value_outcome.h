// What becomes of the values of a parameter when files that hold them are loaded by another
// release.
#pragma once

#include "core/definitions.h"
#include "core/preset_manager.h"
#include "value_check.h"

#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// Values as they stand in messages: `13..20`, `"on"`, `"off" -> 0`.
struct ValueOutcome {
    std::vector<std::string> mapped;    ///< by a translate section
    std::vector<std::string> refused;   ///< no range has them, so a load that sets one fails
    std::vector<std::string> undecided; ///< whether one has them depends on parameters
};

/// A release on one variant of the device. All is borrowed.
struct ReleaseOnVariant {
    const Definitions& definitions;
    const SystemArguments& arguments;
    const PresetManager& manager;
};

class ValueComparison {
public:
    ValueComparison(const ReleaseOnVariant& older, const ReleaseOnVariant& newer)
        : older_(older),
          newer_(newer),
          values_(newer.definitions.parameters, newer.arguments) {}

    /// Follows the values that the ranges of the older release have through a load: texts, and of
    /// numbers, which a store writes in decimal, one of those between which nothing changes. Of a
    /// parameter without ranges, which takes any text, those that are mapped and one more.
    ///
    /// @param parameter of the older release.
    /// @param key       one of its keys, of which a load by the newer release sets the value.
    /// @param newName   of the parameter that is set.
    ValueOutcome outcomeOf(const SystemParameter& parameter, std::string_view key,
                           std::string_view newName);

private:
    std::vector<ValidValue> storedValues(const SystemParameter& parameter,
                                         const AcceptedValues& before) const;
    bool hasOpenRange(const SystemParameter& parameter) const;

    ReleaseOnVariant older_;
    ReleaseOnVariant newer_;
    ValueCheck values_;
};

} // namespace morvane::ctl
