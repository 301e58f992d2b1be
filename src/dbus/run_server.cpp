#include "dbus/run_server.h"

#include "dbus/fatal_error.h"
#include "dbus/server.h"
#include "glib/deprecated_glib.h"
#include "glib/glib_owned.h"
#include "paramhandler/error_log.h"

#include <dbus/dbus-glib-lowlevel.h>
#include <dbus/dbus-glib.h>

#include <fcntl.h>
#include <malloc.h>
#include <syslog.h>
#include <unistd.h>

namespace morvane {

namespace {

constexpr const char* serviceName = "org.norvix.preset";
constexpr const char* objectPath = "/preset";
constexpr const char* unknownDetail = "Unknown (OOM ?)";

void createMainLoop() {
    service.mainLoop = g_main_loop_new(nullptr, FALSE);
    if (service.mainLoop == nullptr)
        failStartUp("Couldn’t create GMainLoop", unknownDetail);
    service.mutex = newMutex();
    if (service.mutex == nullptr)
        failStartUp("Couldn’t create mutex", unknownDetail);
}

DBusGConnection* connectSessionBus() {
    syslog(LOG_INFO, "%s:main Connecting to the Session D-Bus.\n", programTag);
    GError* raw = nullptr;
    DBusGConnection* const bus = dbus_g_bus_get(DBUS_BUS_SESSION, &raw);
    if (const OwnedError error{raw})
        failStartUp("Couldn’t connect to session bus", messageOf(error));
    return bus;
}

guint requestName(DBusGConnection* bus) {
    syslog(LOG_INFO, "%s:main Registering the well-known name (%s)\n", programTag, serviceName);
    DBusGProxy* const driver =
        dbus_g_proxy_new_for_name(bus, DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS);
    if (driver == nullptr)
        failStartUp("Failed to get a proxy for D-Bus", "Unknown(dbus_g_proxy_new_for_name)");
    GError* raw = nullptr;
    guint result = 0;
    constexpr guint flags = 0;
    dbus_g_proxy_call(driver, "RequestName", &raw, G_TYPE_STRING, serviceName, G_TYPE_UINT, flags,
                      G_TYPE_INVALID, G_TYPE_UINT, &result, G_TYPE_INVALID);
    if (const OwnedError error{raw})
        failStartUp("D-Bus. RequestName RPC failed", messageOf(error));
    g_object_unref(driver);
    return result;
}

// The bus queues a second instance instead of refusing it, so the answer must be checked.
void claimName(DBusGConnection* bus) {
    const auto result = requestName(bus);
    syslog(LOG_INFO, "%s:main RequestName returned %d.\n", programTag, static_cast<int>(result));
    if (result != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        failStartUp("Failed to get the primary well-known name.", "RequestName result != 1");
}

void exportObject(DBusGConnection* bus) {
    syslog(LOG_INFO, "%s:main Creating one Value object.\n", programTag);
    auto* const object = static_cast<GObject*>(g_object_new(value_object_get_type(), nullptr));
    if (object == nullptr)
        failStartUp("Failed to create one Value instance.", unknownDetail);
    syslog(LOG_INFO, "%s:main Registering it on the D-Bus.\n", programTag);
    dbus_g_connection_register_g_object(bus, objectPath, object);
}

void detach(std::int32_t daemonize) {
    syslog(LOG_INFO, "%s:main Ready to serve requests (daemonizing).\n", programTag);
    if (daemonize == 0)
        syslog(LOG_INFO, "%s: Not daemonizing\n", programTag);
    else if (daemon(0, 0) != 0)
        g_error("morvane: Failed to daemonize.\n");
}

} // namespace

void openStandardStreams() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    close(descriptor); // the one beyond them
}

void returnFreedMemory() {
#ifdef __GLIBC__
    // What the definitions took while they were read would stay for the rest of the run.
    malloc_trim(0);
#endif
}

std::int32_t run_server(const Connection& parameterHandler, PresetManager& manager,
                        std::int32_t daemonize) {
    service.operations = bindOperations(parameterHandler);
    service.manager = &manager;
    initialiseTypes();
    initialiseThreads();
    createMainLoop();
    DBusGConnection* const bus = connectSessionBus();
    claimName(bus);
    exportObject(bus);
    detach(daemonize);
    g_main_loop_run(service.mainLoop);
    dbus_connection_flush(dbus_g_connection_get_connection(bus)); // the answer to "die" and others
    return 1;
}

} // namespace morvane
