// The operations on many parameters at once that the preset engine is built on.
//
// Each turns a collection into one remote call: the one-parameter method for one entry, the bulk
// method for several, none for an empty collection, which succeeds. `transaction` is borrowed; null
// means outside a transaction. Every text must be one that may be sent: see `isSendable`. Results:
// true when the call succeeded, false when the Parameter Handler refused it, which is logged, or
// when there is no proxy. After a transport error, a call is repeated at once and without limit.
#pragma once

#include "paramhandler/connection.h"
#include "text/c_string_view.h"
#include "text/request_texts.h"

#include <glib.h>

#include <span>
#include <string>

namespace morvane {

/// The argument of the bulk get methods whose meaning only the Parameter Handler knows; this value
/// asks for nothing special.
constexpr guint32 bulkGetOption = 0;

bool parm_start_trans(const Connection& connection, guint32& transaction);
bool parm_end_trans(const Connection& connection, guint32 transaction);

/// @param option see `bulkGetOption`.
/// @param values replaced by one value for each name, in their order; left alone on failure.
bool parm_get(const Connection& connection, const guint32* transaction, guint32 option,
              std::span<const CStringView> names, ReceivedStrings& values);

/// Sets read-write parameters, in list order.
bool parm_set(const Connection& connection, const guint32* transaction,
              std::span<const KeyValue> request);

/// Sets the status values of read-only parameters, in list order.
bool parm_set_status(const Connection& connection, const guint32* transaction,
                     std::span<const KeyValue> request);

/// Resets read-write parameters to their defaults.
bool parm_reset(const Connection& connection, const guint32* transaction,
                std::span<const CStringView> names);

/// Resets the status values of read-only parameters to their defaults.
bool parm_reset_status(const Connection& connection, const guint32* transaction,
                       std::span<const CStringView> names);

/// Asks whether a value could be set.
/// @param accepted the answer; left alone on failure.
bool parm_check_set(const Connection& connection, const guint32* transaction,
                    const std::string& name, const std::string& value, bool& accepted);

/// Sends the commit and returns at once; `commitCallback` ends the transaction later.
/// @return false only without a proxy.
bool parm_commit(const Connection& connection, guint32 transaction);

/// Commits, waits for the answer, and ends the transaction in every case.
/// @return whether both succeeded. A failed commit is not repeated.
bool parm_commit_sync(const Connection& connection, guint32 transaction);

/// Completes an asynchronous commit: logs the error, if there is one, and ends the transaction.
/// @param error null if the commit succeeded; freed here.
void commitCallback(const Connection& connection, GError* error, guint32 transaction);

} // namespace morvane
