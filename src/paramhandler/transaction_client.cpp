#include "paramhandler/transaction_client.h"

#include <dbus/dbus-glib.h>

#include <utility>

namespace morvane {

namespace {

const char* pick(Target target, const char* plain, const char* status) {
    return target == Target::status ? status : plain;
}

void onCommitComplete(DBusGProxy* proxy, DBusGProxyCall* call, gpointer callback) {
    GError* error = nullptr;
    dbus_g_proxy_end_call(proxy, call, &error, G_TYPE_INVALID);
    (*static_cast<const CommitCallback*>(callback))(error);
}

void freeCommitCallback(gpointer callback) {
    delete static_cast<CommitCallback*>(callback);
}

} // namespace

void callStart(DBusGProxy* proxy, guint32& transaction, GError** error) {
    dbus_g_proxy_call(proxy, "start", error, G_TYPE_INVALID, G_TYPE_UINT, &transaction,
                      G_TYPE_INVALID);
}

void callEnd(DBusGProxy* proxy, guint32 transaction, GError** error) {
    dbus_g_proxy_call(proxy, "end", error, G_TYPE_UINT, transaction, G_TYPE_INVALID,
                      G_TYPE_INVALID);
}

void callCommit(DBusGProxy* proxy, guint32 transaction, GError** error) {
    dbus_g_proxy_call(proxy, "commit", error, G_TYPE_UINT, transaction, G_TYPE_INVALID,
                      G_TYPE_INVALID);
}

void callGet(DBusGProxy* proxy, const guint32* transaction, const gchar* name, gchar*& value,
             GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, "get", error, G_TYPE_UINT, *transaction, G_TYPE_STRING, name,
                          G_TYPE_INVALID, G_TYPE_STRING, &value, G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, "single_get", error, G_TYPE_STRING, name, G_TYPE_INVALID,
                          G_TYPE_STRING, &value, G_TYPE_INVALID);
}

void callGetBulk(DBusGProxy* proxy, const guint32* transaction, guint32 option, gchar** names,
                 gchar**& values, GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, "get_bulk", error, G_TYPE_UINT, *transaction, G_TYPE_UINT, option,
                          G_TYPE_STRV, names, G_TYPE_INVALID, G_TYPE_STRV, &values, G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, "single_get_bulk", error, G_TYPE_UINT, option, G_TYPE_STRV, names,
                          G_TYPE_INVALID, G_TYPE_STRV, &values, G_TYPE_INVALID);
}

void callSet(DBusGProxy* proxy, const guint32* transaction, Target target, const gchar* name,
             const gchar* value, GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, pick(target, "set", "set_status"), error, G_TYPE_UINT,
                          *transaction, G_TYPE_STRING, name, G_TYPE_STRING, value, G_TYPE_INVALID,
                          G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, pick(target, "single_set", "single_set_status"), error,
                          G_TYPE_STRING, name, G_TYPE_STRING, value, G_TYPE_INVALID,
                          G_TYPE_INVALID);
}

void callSetBulk(DBusGProxy* proxy, const guint32* transaction, Target target, gchar** names,
                 gchar** values, GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, pick(target, "set_bulk", "set_status_bulk"), error, G_TYPE_UINT,
                          *transaction, G_TYPE_STRV, names, G_TYPE_STRV, values, G_TYPE_INVALID,
                          G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, pick(target, "single_set_bulk", "single_set_status_bulk"), error,
                          G_TYPE_STRV, names, G_TYPE_STRV, values, G_TYPE_INVALID, G_TYPE_INVALID);
}

void callCheckSet(DBusGProxy* proxy, const guint32* transaction, const gchar* name,
                  const gchar* value, gboolean& accepted, GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, "check_set", error, G_TYPE_UINT, *transaction, G_TYPE_STRING, name,
                          G_TYPE_STRING, value, G_TYPE_INVALID, G_TYPE_BOOLEAN, &accepted,
                          G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, "single_check_set", error, G_TYPE_STRING, name, G_TYPE_STRING,
                          value, G_TYPE_INVALID, G_TYPE_BOOLEAN, &accepted, G_TYPE_INVALID);
}

void callReset(DBusGProxy* proxy, const guint32* transaction, Target target, const gchar* name,
               GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, pick(target, "reset", "reset_status"), error, G_TYPE_UINT,
                          *transaction, G_TYPE_STRING, name, G_TYPE_INVALID, G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, pick(target, "single_reset", "single_reset_status"), error,
                          G_TYPE_STRING, name, G_TYPE_INVALID, G_TYPE_INVALID);
}

void callResetBulk(DBusGProxy* proxy, const guint32* transaction, Target target, gchar** names,
                   GError** error) {
    if (transaction != nullptr)
        dbus_g_proxy_call(proxy, pick(target, "reset_bulk", "reset_status_bulk"), error,
                          G_TYPE_UINT, *transaction, G_TYPE_STRV, names, G_TYPE_INVALID,
                          G_TYPE_INVALID);
    else
        dbus_g_proxy_call(proxy, pick(target, "single_reset_bulk", "single_reset_status_bulk"),
                          error, G_TYPE_STRV, names, G_TYPE_INVALID, G_TYPE_INVALID);
}

void beginCommit(DBusGProxy* proxy, guint32 transaction, CommitCallback callback) {
    dbus_g_proxy_begin_call(proxy, "commit", onCommitComplete,
                            new CommitCallback(std::move(callback)), freeCommitCallback,
                            G_TYPE_UINT, transaction, G_TYPE_INVALID);
}

bool subscribe_transaction_signal(DBusGProxy* proxy, TransactionHandler handler,
                                  gpointer userData) {
    constexpr const char* signalName = "transaction";
    if (proxy == nullptr)
        return false;
    dbus_g_proxy_add_signal(proxy, signalName, G_TYPE_STRV, G_TYPE_INVALID);
    dbus_g_proxy_connect_signal(proxy, signalName, G_CALLBACK(handler), userData, nullptr);
    return true;
}

} // namespace morvane
