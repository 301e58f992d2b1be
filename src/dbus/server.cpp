#include "dbus/server.h"

#include "core/preset_manager.h"
#include "dbus/parameter_binding.h"
#include "dbus/service_globals.h"
#include "engine/load_preset.h"
#include "engine/store_preset.h"
#include "glib/deprecated_glib.h"
#include "value_object_glue.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace morvane;

namespace {

/// Holds the service mutex. There is none before start-up and after "die".
class ServiceLock {
public:
    ServiceLock() : mutex_(threadsInitialised() ? service.mutex : nullptr) {
        if (mutex_ != nullptr)
            g_mutex_lock(mutex_);
    }
    ~ServiceLock() {
        if (mutex_ != nullptr)
            g_mutex_unlock(mutex_);
    }
    ServiceLock(const ServiceLock&) = delete;
    ServiceLock& operator=(const ServiceLock&) = delete;

private:
    GMutex* mutex_;
};

gboolean fail(gboolean* success, GError** error, const char* message) {
    *success = FALSE;
    g_set_error_literal(error, g_quark_from_static_string("dbus_norvix_preset"), 0, message);
    return FALSE;
}

// A request that failed is an error reply, not a reply of FALSE.
gboolean answer(bool done, gboolean* success, GError** error, const char* failureMessage) {
    if (!done)
        return fail(success, error, failureMessage);
    *success = TRUE;
    return TRUE;
}

/// The operations over the connection to the Parameter Handler, which there is once it is started.
class Handler {
public:
    const ParameterOperations* get() const {
        return service.parameterHandler != nullptr ? &operations_ : nullptr;
    }

private:
    ParameterOperations operations_ = bindOperations(service.parameterHandler);
};

} // namespace

static void value_object_init(ValueObject* obj) {
    g_assert(obj != NULL);
}

static void value_object_class_init(ValueObjectClass* klass) {
    dbus_g_object_type_install_info(G_TYPE_FROM_CLASS(klass), &dbus_glib_value_object_object_info);
}

GType value_object_get_type() {
    static gsize type = 0;
    if (g_once_init_enter(&type)) {
        const GClassInitFunc initClass = [](gpointer klass, gpointer /*data*/) {
            value_object_class_init(static_cast<ValueObjectClass*>(klass));
        };
        const GInstanceInitFunc initInstance = [](GTypeInstance* instance, gpointer /*klass*/) {
            value_object_init(reinterpret_cast<ValueObject*>(instance));
        };
        const GType registered = g_type_register_static_simple(
            G_TYPE_OBJECT, "ValueObject", sizeof(ValueObjectClass), initClass, sizeof(ValueObject),
            initInstance, GTypeFlags(0));
        g_once_init_leave(&type, registered);
    }
    return type;
}

// The handlers. One that runs out of memory ends the process: std::bad_alloc cannot pass through
// GLib's frames. That is accepted, as whoever supervises the daemon starts it again, and whatever
// it was doing, the files are complete.

gboolean value_object_load(ValueObject* obj, gchar* preset_name, gchar* file_name,
                           gboolean* success, GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_name == nullptr || file_name == nullptr)
        return fail(success, error, "dbus_norvix_preset: Invalid parameters passed to load preset");
    const Handler handler;
    return answer(loadPreset(handler.get(), preset_name, file_name, *service.manager, false),
                  success, error, "dbus_norvix_preset: Load preset failed");
}

gboolean value_object_load_with_default(ValueObject* obj, gchar* preset_name, gchar* file_name,
                                        gboolean* success, GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_name == nullptr || file_name == nullptr)
        return fail(success, error,
                    "dbus_norvix_preset: Invalid parameters passed to load preset with defaults");
    const Handler handler;
    return answer(loadPreset(handler.get(), preset_name, file_name, *service.manager, true),
                  success, error, "dbus_norvix_preset: Load preset with defaults failed");
}

gboolean value_object_load_default(ValueObject* obj, gchar* preset_name, gboolean* success,
                                   GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_name == nullptr)
        return fail(success, error,
                    "dbus_norvix_preset: Invalid parameters passed to load defaults");
    const Handler handler;
    return answer(loadDefaults(handler.get(), preset_name, *service.manager), success, error,
                  "dbus_norvix_preset: Load defaults failed");
}

gboolean value_object_store(ValueObject* obj, gchar* preset_name, gchar* file_name,
                            gboolean* success, GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_name == nullptr || file_name == nullptr)
        return fail(success, error,
                    "dbus_norvix_preset: Invalid parameters passed to store preset");
    const Handler handler;
    return answer(storePreset(handler.get(), preset_name, file_name, *service.manager), success,
                  error, "dbus_norvix_preset: Store preset failed");
}

gboolean value_object_store_subpreset(ValueObject* obj, gchar** preset_list, gchar* preset_name,
                                      gchar* file_name, gboolean* success, GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_list == nullptr || preset_name == nullptr || file_name == nullptr)
        return fail(success, error,
                    "dbus_norvix_preset: Invalid parameters passed to store_subpreset()");
    const KeySet keys(
        std::vector<std::string>(preset_list, preset_list + g_strv_length(preset_list)));
    const Handler handler;
    return answer(storeSubPreset(handler.get(), keys, preset_name, file_name, *service.manager),
                  success, error, "dbus_norvix_preset: Store sub-preset failed");
}

gboolean value_object_in_preset(ValueObject* obj, gchar* preset_name, gchar** parm_list,
                                gboolean* success, GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_name == nullptr || parm_list == nullptr)
        return fail(success, error, "dbus_norvix_preset: Invalid parameters passed to in_preset");
    const bool found = std::any_of(
        parm_list, parm_list + g_strv_length(parm_list),
        [preset_name](const gchar* key) { return service.manager->in_preset(key, preset_name); });
    *success = found ? TRUE : FALSE;
    return TRUE;
}

gboolean value_object_is_preset(ValueObject* obj, gchar* preset_name, gboolean* success,
                                GError** error) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (preset_name == nullptr)
        return fail(success, error, "dbus_norvix_preset: Invalid parameters passed to is_preset");
    *success = service.manager->is_preset(preset_name) ? TRUE : FALSE;
    return TRUE;
}

gboolean value_object_die(ValueObject* obj, GError** /*error*/) {
    g_assert(obj != NULL);
    if (threadsInitialised() && service.mutex != nullptr) {
        freeMutex(service.mutex);
        service.mutex = nullptr; // a request that is already queued is still answered
    }
    if (service.mainLoop != nullptr)
        g_main_loop_quit(service.mainLoop);
    return TRUE;
}
