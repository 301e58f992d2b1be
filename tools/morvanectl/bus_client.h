// Calls on the session bus. Nothing else in morvanectl uses GDBus, but to receive signals.
#pragma once

#include "glib/variant.h"
#include "output.h"
#include "settings.h"
#include "wait.h"

#include <gio/gio.h>

#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {

/// A service: its name, and its one object and interface.
struct Service {
    const char* name;
    const char* path;
};

constexpr Service presetService{"org.norvix.preset", "/preset"};
constexpr Service busDriver{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
constexpr Service parameterHandler{"org.norvix.transaction", "/transaction"};

/// An answer, or why there is none.
struct Answer {
    enum class Outcome {
        answered,
        refused,    ///< the service, or the bus in its place, answered with an error
        notRunning, ///< nobody has the name of the service, and the bus could not start it
        timedOut,   ///< there was no answer within the time limit
        lost,       ///< the service or the bus ended before it answered
    };

    Outcome outcome = Outcome::answered;
    OwnedVariant values; ///< null without an answer
    std::string error;   ///< why there is none; that of the service as it was sent
};

/// The answer, where it is a boolean.
std::optional<bool> yesOrNo(const Answer& answer);

using OwnedConnection = std::unique_ptr<GDBusConnection, ReleasedBy<g_object_unref>>;

/// A connection to a bus. Whatever takes more than a second is said on standard error.
class BusClient {
public:
    /// Connects to the bus of the settings, within their time limit. On failure the object is of no
    /// use and `error` says why.
    BusClient(const Settings& settings, std::string& error);

    /// Calls a method and waits for the answer, as long as the settings let it. Lets the bus start
    /// the service.
    ///
    /// @param arguments a floating tuple, which is consumed.
    Answer call(const Service& service, const char* method, GVariant* arguments) const;

    /// As above, with a time limit of its own.
    Answer call(const Service& service, const char* method, GVariant* arguments,
                const TimeLimit& limit) const;

    /// As above, as long as what waitFor() has returned for it waits.
    Answer call(const Service& service, const char* method, GVariant* arguments, Wait& wait) const;

    /// The wait for one call of a method, with the time limit of the settings.
    Wait waitFor(const Service& service, const char* method) const;

    /// The address of the bus.
    const std::string& address() const { return address_; }

    /// Whether the service runs; nothing if the bus does not answer.
    std::optional<bool> isRunning(const Service& service) const;
    std::optional<bool> isRunning(const Service& service, const TimeLimit& limit) const;

    /// Borrowed; for those who receive signals.
    GDBusConnection* connection() const { return bus_.get(); }

private:
    Messages messages_;
    TimeLimit limit_;
    std::string address_;
    OwnedConnection bus_;
};

} // namespace morvane::ctl
