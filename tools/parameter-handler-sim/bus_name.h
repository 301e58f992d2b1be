// A well-known name on the bus that can be given up for a while.
#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace morvane::sim {

/// Must stay where it is while the main loop runs.
class BusName {
public:
    /// Requests the name.
    ///
    /// @param bus      borrowed for the object's life; `name` is a literal.
    /// @param acquired called from the main loop each time the name is ours.
    /// @param refused  called from the main loop when another process has the name.
    BusName(GDBusConnection* bus, const char* name, std::function<void()> acquired,
            std::function<void()> refused);
    ~BusName();
    BusName(const BusName&) = delete;
    BusName& operator=(const BusName&) = delete;

    /// Gives the name up, and takes it back after that many milliseconds, or never.
    void drop(std::optional<std::uint32_t> milliseconds);

private:
    void own();
    void release();

    GDBusConnection* bus_;
    const char* name_;
    std::function<void()> acquired_;
    std::function<void()> refused_;
    guint owner_ = 0;   ///< 0 while the name is given up
    guint timeout_ = 0; ///< 0 unless the name is to be taken back
};

} // namespace morvane::sim
