// What the engine asks of the Parameter Handler. The service binds these operations to the D-Bus
// client; tests bind them to a recorder.
#pragma once

#include "engine/tables/key_set.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace morvane {

/// The identifier of a transaction, handed out by the Parameter Handler.
using Transaction = std::uint32_t;

/// Each operation returns whether it succeeded. One that did not may be tried again.
struct ParameterOperations {
    /// Starts a transaction and hands out its identifier.
    std::function<bool(Transaction& started)> parm_start_trans;

    /// Ends a transaction; what it set and did not commit is dropped.
    std::function<bool(Transaction transaction)> parm_end_trans;

    /// Reads the values of `keys`.
    /// @param values replaced by one value for each key, in their order; left alone by a failure.
    std::function<bool(Transaction transaction, const KeySet& keys,
                       std::vector<std::string>& values)>
        parm_get;
};

} // namespace morvane
