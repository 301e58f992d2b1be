#include "paramhandler/connection.h"

#include "glib/deprecated_glib.h"
#include "paramhandler/error_report.h"

#include <dbus/dbus-glib-lowlevel.h>
#include <dbus/dbus-glib.h>

#include <syslog.h>

#include <utility>

namespace morvane {

namespace {

constexpr const char* serviceName = "org.norvix.transaction";
constexpr const char* objectPath = "/transaction";
constexpr const char* interfaceName = "org.norvix.transaction";

// Where a proxy keeps its connection, which it does not give away itself.
constexpr const char* connectionKey = "morvane-connection";

void exitBecauseClosed() {
    reportError("Session D-Bus connection closed", "no request can be answered any more",
                AfterReport::exit);
}

// libdbus would end the process too, but without a word in the log.
DBusHandlerResult onMessage(DBusConnection* /*connection*/, DBusMessage* message,
                            void* /*userData*/) {
    if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected"))
        exitBecauseClosed();
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

DBusConnection* connectSessionBus(DBusGConnection*& bus) {
    GError* error = nullptr;
    bus = dbus_g_bus_get(DBUS_BUS_SESSION, &error);
    if (error != nullptr)
        reportError("Couldn't connect to the Session bus", OwnedError(error), AfterReport::exit);
    return dbus_g_connection_get_connection(bus);
}

} // namespace

DBusGProxy* connectParameterHandler() {
    initialiseTypes();
    syslog(LOG_INFO, "Connecting to Session D-Bus for Parameter Handler\n");
    DBusGConnection* bus = nullptr;
    DBusConnection* const connection = connectSessionBus(bus);
    // Before the proxy's own filter, which would turn the proxy into one that fails silently.
    dbus_connection_add_filter(connection, onMessage, nullptr, nullptr);
    DBusGProxy* const proxy =
        dbus_g_proxy_new_for_name(bus, serviceName, objectPath, interfaceName);
    if (proxy == nullptr)
        reportError("Couldn't create the proxy object", "Unknown(dbus_g_proxy_new_for_name)",
                    AfterReport::exit);
    g_object_set_data(G_OBJECT(proxy), connectionKey, connection);
    return proxy;
}

void exitIfClosed(DBusGProxy* proxy) {
    auto* const connection =
        static_cast<DBusConnection*>(g_object_get_data(G_OBJECT(proxy), connectionKey));
    if (!dbus_connection_get_is_connected(connection))
        exitBecauseClosed();
}

} // namespace morvane
