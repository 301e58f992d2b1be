// The object that the daemon exports on the session bus, and the handlers of its methods.
//
// All handlers are called from the main loop, one at a time. Every one but "die" holds the service
// mutex for its whole work, the calls to the Parameter Handler and their pauses included.
#pragma once

#include "engine/parameter_operations.h"
#include "paramhandler/connection.h"

#include <glib-object.h>

#include <optional>

namespace morvane {

class PresetManager;

/// What the method handlers need and D-Bus does not pass to them. Set once during start-up, in the
/// order of the members; the pointers are borrowed.
struct ServiceGlobals {
    std::optional<ParameterOperations> operations; ///< of the Parameter Handler, once connected
    PresetManager* manager = nullptr;
    GMainLoop* mainLoop = nullptr;
    GMutex* mutex = nullptr; ///< serialises the method handlers; null again after "die"
};

extern ServiceGlobals service;

/// The operations of the Parameter Handler, over the connection to it.
/// @param connection must have a proxy.
ParameterOperations bindOperations(const Connection& connection);

} // namespace morvane

/// Adds no fields and no virtual operations to its parent.
struct ValueObject {
    GObject parent;
};

struct ValueObjectClass {
    GObjectClass parent;
};

/// Registers the class on the first call. May be called from several threads.
GType value_object_get_type();

// Handlers. Strings and lists are borrowed; a null one is refused. Each returns TRUE after storing
// the answer in `success`, or FALSE after setting `error`, in the domain "dbus_norvix_preset" with
// code 0, which the caller frees. `success` is FALSE then.

gboolean value_object_load(ValueObject* obj, gchar* preset_name, gchar* file_name,
                           gboolean* success, GError** error);
gboolean value_object_load_with_default(ValueObject* obj, gchar* preset_name, gchar* file_name,
                                        gboolean* success, GError** error);
gboolean value_object_load_default(ValueObject* obj, gchar* preset_name, gboolean* success,
                                   GError** error);
gboolean value_object_store(ValueObject* obj, gchar* preset_name, gchar* file_name,
                            gboolean* success, GError** error);

/// @param preset_list null-terminated keys; those that are not in the preset are ignored.
gboolean value_object_store_subpreset(ValueObject* obj, gchar** preset_list, gchar* preset_name,
                                      gchar* file_name, gboolean* success, GError** error);

/// Answers whether any of the keys is in the preset.
/// @param parm_list null-terminated.
gboolean value_object_in_preset(ValueObject* obj, gchar* preset_name, gchar** parm_list,
                                gboolean* success, GError** error);
gboolean value_object_is_preset(ValueObject* obj, gchar* preset_name, gboolean* success,
                                GError** error);

/// Ends the main loop and with it the daemon. Any client may ask for it.
gboolean value_object_die(ValueObject* obj, GError** error);
