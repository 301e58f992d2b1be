/* A client of the preset service in C: GDBus, with code that gdbus-codegen makes of the interface.
 *
 *   gdbus-codegen --c-namespace Morvane --interface-prefix org.norvix. \
 *       --generate-c-code preset_bus /usr/share/dbus-1/interfaces/org.norvix.preset.xml
 *   cc -o client client.c preset_bus.c $(pkg-config --cflags --libs gio-unix-2.0)
 */

#include "preset_bus.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define SERVICE "org.norvix.preset"

/* A load tries each of its six operations ten times, a second apart, before it gives up. After
 * D-Bus's usual 25 seconds nobody would be there to hear of it. */
#define TIMEOUT_SECONDS 60

struct waiting {
    GMainLoop* loop;
    gboolean found;
};

static void on_appeared(GDBusConnection* bus, const char* name, const char* owner, gpointer data) {
    (void)bus, (void)name, (void)owner;
    struct waiting* waiting = data;
    waiting->found = TRUE;
    g_main_loop_quit(waiting->loop);
}

static gboolean on_timeout(gpointer loop) {
    g_main_loop_quit(loop);
    return G_SOURCE_REMOVE;
}

/* Waits until the service is on the bus, and has the bus start it if the bus knows how. */
static gboolean wait_for_service(GDBusConnection* bus, unsigned seconds, GError** error) {
    struct waiting waiting = {g_main_loop_new(NULL, FALSE), FALSE};
    const guint watch = g_bus_watch_name_on_connection(
        bus, SERVICE, G_BUS_NAME_WATCHER_FLAGS_AUTO_START, on_appeared, NULL, &waiting, NULL);
    g_timeout_add_seconds(seconds, on_timeout, waiting.loop);
    g_main_loop_run(waiting.loop);
    g_bus_unwatch_name(watch);
    g_main_loop_unref(waiting.loop);
    if (!waiting.found)
        g_set_error(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT, SERVICE " is not on the bus");
    return waiting.found;
}

/* Stores a preset in a file, or loads it. A request that fails is answered with an error, so there
 * is no need to look at "success". */
static gboolean request(GDBusConnection* bus, const char* method, const char* preset,
                        const char* file, GError** error) {
    MorvanePreset* service = morvane_preset_proxy_new_sync(
        bus, G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS,
        SERVICE, "/preset", NULL, error);
    if (service == NULL)
        return FALSE;
    g_dbus_proxy_set_default_timeout(G_DBUS_PROXY(service), TIMEOUT_SECONDS * 1000);
    /* The daemon's own folder is "/". */
    char* path = g_canonicalize_filename(file, NULL);
    gboolean success = FALSE;
    const gboolean answered =
        strcmp(method, "store") == 0
            ? morvane_preset_call_store_sync(service, preset, path, &success, NULL, error)
            : morvane_preset_call_load_sync(service, preset, path, &success, NULL, error);
    g_free(path);
    g_object_unref(service);
    return answered;
}

static gboolean run(char** arguments, GError** error) {
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, NULL, error);
    if (bus == NULL)
        return FALSE;
    /* A bus that goes away is an error like others, and not the end of the program. */
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    const gboolean done =
        strcmp(arguments[0], "wait") == 0
            ? wait_for_service(bus, (unsigned)strtoul(arguments[1], NULL, 10), error)
            : request(bus, arguments[0], arguments[1], arguments[2], error);
    g_object_unref(bus);
    return done;
}

int main(int argc, char** argv) {
    const char* method = argc > 1 ? argv[1] : "";
    const gboolean waits = argc == 3 && strcmp(method, "wait") == 0;
    const gboolean requests =
        argc == 4 && (strcmp(method, "store") == 0 || strcmp(method, "load") == 0);
    if (!waits && !requests) {
        fputs("Usage: client wait SECONDS | store PRESET FILE | load PRESET FILE\n", stderr);
        return 2;
    }
    for (int i = 2; i < argc; ++i) {
        if (!g_utf8_validate(argv[i], -1, NULL)) { /* D-Bus carries nothing else */
            fputs("client: an argument is not UTF-8\n", stderr);
            return 1;
        }
    }
    GError* error = NULL;
    if (run(argv + 1, &error))
        return 0;
    g_dbus_error_strip_remote_error(error); /* which leaves what the service said */
    fprintf(stderr, "client: %s\n", error->message);
    g_error_free(error);
    return 1;
}
