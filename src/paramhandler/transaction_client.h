// One thin call for each remote method of the Parameter Handler's transaction interface.
//
// Every call is synchronous. `transaction` is borrowed; null selects the method's "single_" form,
// which acts outside a transaction. An error is returned through `error` for the caller to free;
// the other outputs are then left alone.
#pragma once

#include "paramhandler/connection.h"

#include <glib.h>

#include <functional>

namespace morvane {

/// Selects the method for read-only parameters, whose live values are their status, or the plain
/// one.
enum class Target {
    value,
    status
};

void callStart(DBusGProxy* proxy, guint32& transaction, GError** error);
void callEnd(DBusGProxy* proxy, guint32 transaction, GError** error);
void callCommit(DBusGProxy* proxy, guint32 transaction, GError** error);

/// @param value the caller's to free with `g_free`.
void callGet(DBusGProxy* proxy, const guint32* transaction, const gchar* name, gchar*& value,
             GError** error);

/// @param option only the Parameter Handler knows its meaning.
/// @param values null-terminated; the caller's to free with `g_strfreev`.
void callGetBulk(DBusGProxy* proxy, const guint32* transaction, guint32 option, gchar** names,
                 gchar**& values, GError** error);

void callSet(DBusGProxy* proxy, const guint32* transaction, Target target, const gchar* name,
             const gchar* value, GError** error);
void callSetBulk(DBusGProxy* proxy, const guint32* transaction, Target target, gchar** names,
                 gchar** values, GError** error);

/// @param accepted whether the value could be set.
void callCheckSet(DBusGProxy* proxy, const guint32* transaction, const gchar* name,
                  const gchar* value, gboolean& accepted, GError** error);

void callReset(DBusGProxy* proxy, const guint32* transaction, Target target, const gchar* name,
               GError** error);
void callResetBulk(DBusGProxy* proxy, const guint32* transaction, Target target, gchar** names,
                   GError** error);

/// Called when an asynchronous commit is complete.
/// @param error null if it succeeded; the callback's to free.
using CommitCallback = std::function<void(GError* error)>;

/// Sends "commit" and returns at once; `callback` is called later, from the main loop.
void beginCommit(DBusGProxy* proxy, guint32 transaction, CommitCallback callback);

/// Called for each "transaction" signal.
/// @param keys null-terminated, borrowed for the call.
using TransactionHandler = void (*)(DBusGProxy* proxy, gchar** keys, gpointer userData);

/// Calls `handler` for every "transaction" signal that arrives. Not used by the service itself.
/// @return false if there is no proxy.
bool subscribe_transaction_signal(DBusGProxy* proxy, TransactionHandler handler, gpointer userData);

} // namespace morvane
