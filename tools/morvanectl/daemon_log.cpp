#include "daemon_log.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace morvane::ctl {

namespace {

constexpr const char* programName = "morvane"; // with which the C library marks its messages
constexpr std::string_view unitSuffix = ".service";
constexpr std::string_view userManager = "user@";

bool isUserManager(std::string_view name) {
    return name.starts_with(userManager) && name.ends_with(unitSuffix);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const auto part = text.substr(0, text.find(separator));
        parts.push_back(part);
        text.remove_prefix(std::min(part.size() + 1, text.size()));
    }
    return parts;
}

// The path of the group that systemd made: its own hierarchy, or the only one.
std::string_view groupOf(std::string_view groups) {
    for (const auto line : split(groups, '\n')) {
        for (const std::string_view head : {"0::", "1:name=systemd:"}) {
            if (line.starts_with(head) && line.size() > head.size() + 1)
                return line.substr(head.size());
        }
    }
    return {};
}

std::string readGroups(unsigned process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/cgroup");
    return {std::istreambuf_iterator<char>(file), {}};
}

bool isSystemdRunning() {
    std::error_code error;
    return std::filesystem::is_directory("/run/systemd/system", error);
}

} // namespace

std::optional<Unit> unitOf(std::string_view groups) {
    Unit unit;
    for (const auto name : split(groupOf(groups), '/')) {
        if (isUserManager(name))
            unit.ofUser = true;
        else if (name.ends_with(unitSuffix))
            unit.name = name; // of a group within another, the inner
    }
    return unit.name.empty() ? std::nullopt : std::optional(std::move(unit));
}

std::string whereTheLogIs(const std::optional<Process>& process) {
    // Another process may have the number of one that ended.
    const auto unit =
        process && process->program == programName ? unitOf(readGroups(process->id)) : std::nullopt;
    if (unit)
        return "the log of the service: journalctl --" +
               std::string(unit->ofUser ? "user-unit=" : "unit=") + unit->name;
    if (isSystemdRunning())
        return std::string(
                   "the log of the service is probably shown by: journalctl --identifier=") +
               programName;
    return std::string("the service writes to the system log, probably as ") + programName;
}

} // namespace morvane::ctl
