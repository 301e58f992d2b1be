// The parameters of one simulated device: what exists on this variant, and what may be set.
#pragma once

#include "paramdef/system_arguments.h"
#include "paramdef/system_parameter.h"
#include "tables/valid_values.h"

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace morvane::sim {

/// What all instances of one parameter have in common.
struct DeviceParameter {
    AccessType access = AccessType::ACCESS_RW;
    AcceptedValues accepted;
    std::string defaultValue;

    bool isReadOnly() const {
        return access == AccessType::ACCESS_RO || access == AccessType::ACCESS_ROSTRICT;
    }
};

/// By key, such as "gain[1][2]".
class Device {
public:
    /// Expands every parameter that exists on the variant which the arguments describe into its
    /// keys. Conditions that depend on parameter values count as met.
    Device(const SystemParameterTable& parameters, const SystemArguments& arguments);

    /// The device holds pointers into itself.
    ~Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// @return null for an unknown key; valid as long as the device.
    const DeviceParameter* find(const std::string& key) const;

    std::size_t keyCount() const { return keys_.size(); }

private:
    std::deque<DeviceParameter> parameters_;
    std::unordered_map<std::string, const DeviceParameter*> keys_;
};

} // namespace morvane::sim
