// The connection to the Parameter Handler, the service that owns the live parameter values.
#pragma once

/// Opaque outside the D-Bus code.
using DBusGProxy = struct _DBusGProxy;
using DBusConnection = struct DBusConnection;

namespace morvane {

/// Lives as long as the process; copies are the same connection. Without a proxy, not connected.
struct Connection {
    DBusGProxy* proxy = nullptr;   ///< of the Parameter Handler
    DBusConnection* bus = nullptr; ///< which the proxy does not expose
};

/// Connects to the session bus and makes the one proxy for the Parameter Handler. Ends the process
/// with status 1 if there is no bus. The Parameter Handler itself need not be running yet.
///
/// From then on, the process ends with status 1 when the bus closes the connection: nothing can
/// ever be answered over it again.
Connection connectParameterHandler();

/// Ends the process with status 1 if the connection is closed. To be called between retries, while
/// the main loop is not running.
void exitIfClosed(const Connection& connection);

} // namespace morvane
