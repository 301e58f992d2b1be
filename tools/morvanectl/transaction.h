// A transaction of the Parameter Handler, which is ended whatever happens to the command.
#pragma once

#include "bus_client.h"
#include "interruption.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace morvane::ctl {

/// What is set: the value of a parameter that clients may set, or the status that a read-only one
/// shows.
enum class Target {
    value,
    status
};

struct Assignment {
    std::string key;
    std::string value;
};

/// What is set in it is seen by others after the commit, and discarded by an end without one. All
/// methods wait for the answer, and return what is wrong with it; an empty text if nothing is.
///
/// A signal that asks for the end leaves the transaction to be ended by its owner, and gives each
/// answer five more seconds. A Parameter Handler that does not answer start or end in time may keep
/// the transaction open.
class Transaction {
public:
    /// Starts a transaction. On failure the object is of no use and `error` says why.
    /// @param bus borrowed for the life of the object.
    Transaction(const BusClient& bus, std::string& error);

    /// Ends the transaction, unless end() has been called.
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Whether a signal has asked for the end.
    bool isInterrupted() const { return interruption_.hasComeByNow(); }

    /// What the Parameter Handler calls it; for calls that are not below.
    std::uint32_t id() const { return *id_; }

    /// Sets one value by the method for one, or several by the one for several. The keys and
    /// values are UTF-8.
    std::string set(Target target, std::span<const Assignment> assignments);

    /// Makes what was set visible to all. The transaction stays open.
    std::string commit();

    /// Ends the transaction. If that fails, it is not tried again.
    std::string end();

private:
    Answer ask(const char* method, GVariant* arguments);
    std::string call(const char* method, GVariant* arguments);

    const BusClient& bus_;
    Wait* pending_ = nullptr; ///< for the answer that is awaited
    Interruption interruption_;
    std::optional<std::uint32_t> id_; ///< while it is open
};

} // namespace morvane::ctl
