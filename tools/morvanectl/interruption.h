// Signals that ask a command to end: what it has begun on the bus is ended first.
#pragma once

#include <glib.h>

#include <array>
#include <functional>

namespace morvane::ctl {

/// While it lives, SIGINT, SIGTERM and SIGHUP do not end the process: the main loop notes them.
class Interruption {
public:
    /// @param onSignal is called for each signal, by the main loop; may be empty.
    explicit Interruption(std::function<void()> onSignal = {});
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Whether the main loop has noted a signal.
    bool hasCome() const { return hasCome_; }

    /// As above, after the main loop has done what is pending: a signal may just have arrived.
    bool hasComeByNow() const;

private:
    static gboolean noteSignal(gpointer interruption);

    std::function<void()> onSignal_;
    std::array<guint, 3> sources_{}; ///< of the main loop
    bool hasCome_ = false;
};

} // namespace morvane::ctl
