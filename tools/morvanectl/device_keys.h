// The keys of the device that a check of a Parameter Handler is about, and what the definitions say
// of their values, as far as they decide it.
#pragma once

#include "tables/valid_values.h"
#include "transaction.h"
#include "variant.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// One parameter of this device.
struct CheckedParameter {
    const SystemParameter* definition = nullptr;
    std::vector<std::string> keys; ///< at least one

    /// Whether its values depend on the arguments of the device alone, not on other parameters.
    bool isDecided = false;
    AcceptedValues accepted;
    std::optional<std::string> byDefault; ///< nothing if the definitions do not decide it

    bool hasDecidedRange() const { return isDecided && accepted.isRanged; }
};

/// The parameters that are read, by how they are set: those that clients may set, and those whose
/// status alone can be set.
class DeviceKeys {
public:
    /// @param variant borrowed for the life of the object.
    explicit DeviceKeys(const Variant& variant);

    const std::vector<CheckedParameter>& parameters(Target target) const {
        return target == Target::value ? readWrite_ : readOnly_;
    }

    /// Whether there are such parameters, with a default, or with ranges, that the definitions
    /// decide.
    bool hasAny(Target target) const { return !parameters(target).empty(); }
    bool hasDefaults(Target target) const;
    bool hasRanges(Target target) const;

    /// The keys of these parameters.
    std::vector<std::string> keys(Target target) const;

    /// A key that the device does not have.
    const std::string& unknownKey() const { return unknownKey_; }

private:
    std::vector<CheckedParameter> readWrite_;
    std::vector<CheckedParameter> readOnly_;
    std::string unknownKey_ = "noSuchParameter";
};

/// A value that can be set instead of another one, as near to it as possible: on a device, it takes
/// effect.
/// @return nothing if there is none, or none is known.
std::optional<std::string> otherValue(const CheckedParameter& parameter, const std::string& value);

/// A value that none of the ranges has; nothing without ranges.
std::optional<std::string> invalidValue(const CheckedParameter& parameter);

/// The ends of all ranges, whose conditions are decided.
std::vector<std::string> endsOfRanges(const CheckedParameter& parameter);

/// Whether two texts stand for the same value: numbers may be written in several ways.
bool isSameValue(const std::string& first, const std::string& second);

} // namespace morvane::ctl
