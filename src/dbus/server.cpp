#include "dbus/server.h"

#include "core/preset_manager.h"
#include "engine/load_preset.h"
#include "engine/store_preset.h"
#include "glib/deprecated_glib.h"
#include "paramhandler/parameter_calls.h"
#include "paramhandler/send_check.h"
#include "value_object_glue.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace morvane {

ServiceGlobals service;

ParameterOperations bindOperations(const Connection& connection) {
    return {
        .isSendable = isSendable,
        .parm_start_trans =
            [connection](Transaction& started) { return parm_start_trans(connection, started); },
        .parm_end_trans =
            [connection](Transaction transaction) {
                return parm_end_trans(connection, transaction);
            },
        .parm_get =
            [connection](Transaction transaction, std::span<const CStringView> keys,
                         ReceivedStrings& values) {
                return parm_get(connection, &transaction, bulkGetOption, keys, values);
            },
        .parm_set =
            [connection](Transaction transaction, std::span<const KeyValue> values) {
                return parm_set(connection, &transaction, values);
            },
        .parm_set_status =
            [connection](Transaction transaction, std::span<const KeyValue> values) {
                return parm_set_status(connection, &transaction, values);
            },
        .parm_reset =
            [connection](Transaction transaction, std::span<const CStringView> keys) {
                return parm_reset(connection, &transaction, keys);
            },
        .parm_reset_status =
            [connection](Transaction transaction, std::span<const CStringView> keys) {
                return parm_reset_status(connection, &transaction, keys);
            },
        .parm_commit =
            [connection](Transaction transaction) { return parm_commit(connection, transaction); },
    };
}

} // namespace morvane

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

/// The error messages of a method.
struct MethodErrors {
    const char* invalid; ///< an argument is missing
    const char* failed;  ///< null if FALSE is an answer, not a failure
};

gboolean fail(const char* message, gboolean* success, GError** error) {
    *success = FALSE;
    g_set_error_literal(error, g_quark_from_static_string("dbus_norvix_preset"), 0, message);
    return FALSE;
}

// Handles a call: locks the mutex, checks the arguments, does the work, and answers.
template <typename Work>
gboolean handle(const MethodErrors& errors, const ValueObject* obj,
                std::initializer_list<const void*> arguments, gboolean* success, GError** error,
                Work work) {
    const ServiceLock lock;
    g_assert(obj != NULL);
    if (std::find(arguments.begin(), arguments.end(), nullptr) != arguments.end())
        return fail(errors.invalid, success, error);
    const bool done = work();
    if (!done && errors.failed != nullptr)
        return fail(errors.failed, success, error);
    *success = done ? TRUE : FALSE;
    return TRUE;
}

const ParameterOperations* operations() {
    return service.operations ? &*service.operations : nullptr;
}

std::span<gchar* const> listed(gchar** texts) {
    return {texts, g_strv_length(texts)};
}

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
// GLib's frames. That is accepted: the service manager restarts the daemon, and whatever it was
// doing, the files are complete.

gboolean value_object_load(ValueObject* obj, gchar* preset_name, gchar* file_name,
                           gboolean* success, GError** error) {
    constexpr MethodErrors errors{"dbus_norvix_preset: Invalid parameters passed to load preset",
                                  "dbus_norvix_preset: Load preset failed"};
    return handle(errors, obj, {preset_name, file_name}, success, error, [&] {
        return loadPreset(operations(), preset_name, file_name, *service.manager, Defaults::off);
    });
}

gboolean value_object_load_with_default(ValueObject* obj, gchar* preset_name, gchar* file_name,
                                        gboolean* success, GError** error) {
    constexpr MethodErrors errors{
        "dbus_norvix_preset: Invalid parameters passed to load preset with defaults",
        "dbus_norvix_preset: Load preset with defaults failed"};
    return handle(errors, obj, {preset_name, file_name}, success, error, [&] {
        return loadPreset(operations(), preset_name, file_name, *service.manager, Defaults::on);
    });
}

gboolean value_object_load_default(ValueObject* obj, gchar* preset_name, gboolean* success,
                                   GError** error) {
    constexpr MethodErrors errors{"dbus_norvix_preset: Invalid parameters passed to load defaults",
                                  "dbus_norvix_preset: Load defaults failed"};
    return handle(errors, obj, {preset_name}, success, error,
                  [&] { return loadDefaults(operations(), preset_name, *service.manager); });
}

gboolean value_object_store(ValueObject* obj, gchar* preset_name, gchar* file_name,
                            gboolean* success, GError** error) {
    constexpr MethodErrors errors{"dbus_norvix_preset: Invalid parameters passed to store preset",
                                  "dbus_norvix_preset: Store preset failed"};
    return handle(errors, obj, {preset_name, file_name}, success, error, [&] {
        return storePreset(operations(), preset_name, file_name, *service.manager);
    });
}

gboolean value_object_store_subpreset(ValueObject* obj, gchar** preset_list, gchar* preset_name,
                                      gchar* file_name, gboolean* success, GError** error) {
    constexpr MethodErrors errors{
        "dbus_norvix_preset: Invalid parameters passed to store_subpreset()",
        "dbus_norvix_preset: Store sub-preset failed"};
    return handle(errors, obj, {preset_list, preset_name, file_name}, success, error, [&] {
        const auto list = listed(preset_list);
        const KeySet keys(std::vector<std::string>(list.begin(), list.end()));
        return storeSubPreset(operations(), keys, preset_name, file_name, *service.manager);
    });
}

gboolean value_object_in_preset(ValueObject* obj, gchar* preset_name, gchar** parm_list,
                                gboolean* success, GError** error) {
    constexpr MethodErrors errors{"dbus_norvix_preset: Invalid parameters passed to in_preset",
                                  nullptr};
    return handle(errors, obj, {preset_name, parm_list}, success, error, [&] {
        return std::ranges::any_of(listed(parm_list), [&](const gchar* key) {
            return service.manager->in_preset(key, preset_name);
        });
    });
}

gboolean value_object_is_preset(ValueObject* obj, gchar* preset_name, gboolean* success,
                                GError** error) {
    constexpr MethodErrors errors{"dbus_norvix_preset: Invalid parameters passed to is_preset",
                                  nullptr};
    return handle(errors, obj, {preset_name}, success, error,
                  [&] { return service.manager->is_preset(preset_name); });
}

gboolean value_object_die(ValueObject* obj, GError** /*error*/) {
    g_assert(obj != NULL);
    if (threadsInitialised() && service.mutex != nullptr) {
        freeMutex(service.mutex);
        service.mutex = nullptr;
    }
    if (service.mainLoop != nullptr)
        g_main_loop_quit(service.mainLoop); // requests that are queued behind this one get no reply
    return TRUE;
}
