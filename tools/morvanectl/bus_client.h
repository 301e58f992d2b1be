// Calls on the session bus. Nothing else in morvanectl uses GDBus.
#pragma once

#include "glib/variant.h"
#include "output.h"

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
constexpr Service parameterHandler{"org.norvix.transaction", "/transaction"};

/// An answer, or the text of an error.
struct Answer {
    OwnedVariant values; ///< null after an error
    std::string error;
};

/// A connection to a bus.
class BusClient {
public:
    /// Connects. On failure the object is of no use and `error` says why.
    /// @param address  empty for the session bus.
    /// @param messages gets what is waited for.
    BusClient(const std::string& address, const Messages& messages, std::string& error);

    /// Calls a method and waits for the answer, however long that takes; after a second, says on
    /// standard error what it is waiting for. Lets the bus start the service.
    ///
    /// @param arguments a floating tuple, which is consumed.
    Answer call(const Service& service, const char* method, GVariant* arguments) const;

    /// Whether the service runs; nothing if the bus does not answer.
    std::optional<bool> isRunning(const Service& service) const;

private:
    Messages messages_;
    std::unique_ptr<GDBusConnection, ReleasedBy<g_object_unref>> bus_;
};

} // namespace morvane::ctl
