// What the engine asks of the Parameter Handler. The service binds these operations to the D-Bus
// client; tests bind them to a recorder.
#pragma once

#include "text/c_string_view.h"
#include "text/request_texts.h"

#include <cstdint>
#include <functional>
#include <span>

namespace morvane {

/// The identifier of a transaction, handed out by the Parameter Handler.
using Transaction = std::uint32_t;

/// Each operation returns whether it succeeded. One that did not may be tried again.
struct ParameterOperations {
    /// Whether the texts of a request can be sent to the Parameter Handler; if not, logs why. To be
    /// called before the request starts its transaction: the other operations rely on it.
    std::function<bool(const RequestTexts& texts)> isSendable;

    /// Starts a transaction and hands out its identifier.
    std::function<bool(Transaction& started)> parm_start_trans;

    /// Ends a transaction; changes that it did not commit are dropped.
    std::function<bool(Transaction transaction)> parm_end_trans;

    /// Reads the values of `keys`.
    /// @param values replaced by one value for each key, in their order; left alone on failure.
    std::function<bool(Transaction transaction, std::span<const CStringView> keys,
                       ReceivedStrings& values)>
        parm_get;

    /// Sets read-write parameters, in list order; a repeated key is sent each time. An empty list
    /// succeeds without a call, here and below.
    std::function<bool(Transaction transaction, std::span<const KeyValue> values)> parm_set;

    /// Sets the status values of read-only parameters, in list order.
    std::function<bool(Transaction transaction, std::span<const KeyValue> values)> parm_set_status;

    /// Resets read-write parameters to their defaults.
    std::function<bool(Transaction transaction, std::span<const CStringView> keys)> parm_reset;

    /// Resets the status values of read-only parameters to their defaults.
    std::function<bool(Transaction transaction, std::span<const CStringView> keys)>
        parm_reset_status;

    /// Sends the commit and does not wait for it. The transaction is ended when its answer arrives.
    std::function<bool(Transaction transaction)> parm_commit;
};

} // namespace morvane
