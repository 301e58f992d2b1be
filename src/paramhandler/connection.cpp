#include "paramhandler/connection.h"

#include "glib/deprecated_glib.h"
#include "paramhandler/error_log.h"

#include <dbus/dbus-glib-lowlevel.h>
#include <dbus/dbus-glib.h>

#include <syslog.h>

#include <utility>

namespace morvane {

namespace {

constexpr const char* serviceName = "org.norvix.transaction";
constexpr const char* objectPath = "/transaction";
constexpr const char* interfaceName = "org.norvix.transaction";

[[noreturn]] void exitBecauseClosed() {
    exitWithError("Session D-Bus connection closed", "no request can be answered any more");
}

// libdbus would end the process too, but without logging anything.
DBusHandlerResult onMessage(DBusConnection* /*bus*/, DBusMessage* message, void* /*userData*/) {
    if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected"))
        exitBecauseClosed();
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

DBusGConnection* connectSessionBus() {
    GError* raw = nullptr;
    DBusGConnection* const bus = dbus_g_bus_get(DBUS_BUS_SESSION, &raw);
    if (const OwnedError error{raw})
        exitWithError("Couldn't connect to the Session bus", messageOf(error));
    return bus;
}

} // namespace

Connection connectParameterHandler() {
    initialiseTypes();
    syslog(LOG_INFO, "Connecting to Session D-Bus for Parameter Handler\n");
    DBusGConnection* const session = connectSessionBus();
    Connection connection;
    connection.bus = dbus_g_connection_get_connection(session);
    // Must run before the proxy's own filter, which would make every further call fail silently.
    dbus_connection_add_filter(connection.bus, onMessage, nullptr, nullptr);
    connection.proxy = dbus_g_proxy_new_for_name(session, serviceName, objectPath, interfaceName);
    if (connection.proxy == nullptr)
        exitWithError("Couldn't create the proxy object", "Unknown(dbus_g_proxy_new_for_name)");
    return connection;
}

void exitIfClosed(const Connection& connection) {
    if (!dbus_connection_get_is_connected(connection.bus))
        exitBecauseClosed();
}

} // namespace morvane
