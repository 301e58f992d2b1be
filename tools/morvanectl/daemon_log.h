// Where the log of the preset service is read.
#pragma once

#include "service_facts.h"

#include <optional>
#include <string>
#include <string_view>

namespace morvane::ctl {

/// A unit of systemd.
struct Unit {
    std::string name;
    bool ofUser = false; ///< run by the systemd of a user

    bool operator==(const Unit&) const = default;
};

/// The service unit that runs a process.
/// @param groups content of its /proc/PID/cgroup.
/// @return nothing if there is none.
std::optional<Unit> unitOf(std::string_view groups);

/// Says where the log is. A unit is known only while the process lives that connected to the bus,
/// which one that detached does not; otherwise it is told by the name that the service logs as.
/// @param process nothing if there is none.
std::string whereTheLogIs(const std::optional<Process>& process);

} // namespace morvane::ctl
