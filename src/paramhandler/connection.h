// The connection to the Parameter Handler, the service that owns the live parameter values.
#pragma once

/// Opaque outside the D-Bus code.
using DBusGProxy = struct _DBusGProxy;

namespace morvane {

/// Connects to the session bus and makes the one proxy of the Parameter Handler, which is never
/// released. Ends the process with status 1 if there is no bus. The Parameter Handler itself need
/// not be there yet.
///
/// From then on, the process ends with status 1 when the bus closes the connection: nothing can
/// ever be answered over it again.
DBusGProxy* connectParameterHandler();

/// Ends the process with status 1 if the proxy's connection is closed. To be asked between repeated
/// calls, while the main loop does not run.
void exitIfClosed(DBusGProxy* proxy);

} // namespace morvane
