// empty_service: what a round trip costs over dbus-glib. It has the daemon's interface on an object
// like the daemon's, as org.norvix.empty, answers is_preset and in_preset with TRUE, and knows no
// presets.
//
// Usage: empty_service

#include <dbus/dbus-glib.h>

namespace {

struct EmptyObject {
    GObject parent;
};

gboolean is_preset(EmptyObject* /*object*/, gchar* /*preset*/, gboolean* success,
                   GError** /*error*/) {
    *success = TRUE;
    return TRUE;
}

gboolean in_preset(EmptyObject* /*object*/, gchar* /*preset*/, gchar** /*keys*/, gboolean* success,
                   GError** /*error*/) {
    *success = TRUE;
    return TRUE;
}

// The names that the generated method table asks for; nobody calls the null ones.
constexpr auto* empty_object_is_preset = is_preset;
constexpr auto* empty_object_in_preset = in_preset;
constexpr GCallback empty_object_load = nullptr;
constexpr GCallback empty_object_load_with_default = nullptr;
constexpr GCallback empty_object_load_default = nullptr;
constexpr GCallback empty_object_store = nullptr;
constexpr GCallback empty_object_store_subpreset = nullptr;
constexpr GCallback empty_object_die = nullptr;

#include "empty_object_glue.h"

void init_class(gpointer klass, gpointer /*data*/) {
    dbus_g_object_type_install_info(G_TYPE_FROM_CLASS(klass), &dbus_glib_empty_object_object_info);
}

GObject* create_object() {
    const GType type =
        g_type_register_static_simple(G_TYPE_OBJECT, "EmptyObject", sizeof(GObjectClass),
                                      init_class, sizeof(EmptyObject), nullptr, GTypeFlags(0));
    return static_cast<GObject*>(g_object_new(type, nullptr));
}

bool own(DBusGConnection* bus, const char* name) {
    DBusGProxy* const driver = dbus_g_proxy_new_for_name(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus");
    guint result = 0;
    return dbus_g_proxy_call(driver, "RequestName", nullptr, G_TYPE_STRING, name, G_TYPE_UINT, 0U,
                             G_TYPE_INVALID, G_TYPE_UINT, &result, G_TYPE_INVALID) != FALSE &&
           result == 1;
}

} // namespace

int main() {
    DBusGConnection* const bus = dbus_g_bus_get(DBUS_BUS_SESSION, nullptr);
    if (bus == nullptr)
        return 1;
    dbus_g_connection_register_g_object(bus, "/preset", create_object());
    if (!own(bus, "org.norvix.empty"))
        return 1;
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
