// The live values of a simulated device, and the transactions on them. Independent of D-Bus.
#pragma once

#include "device.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace morvane::sim {

/// Why a request was refused, for the client to read; nothing if it was carried out. A request that
/// is refused changes nothing, even if only one of its many keys is at fault.
using Refusal = std::optional<std::string>;

/// Which kind of value a request is about: that of a parameter that clients may set, or the status
/// of a read-only one.
enum class Target {
    value,
    status
};

using TransactionId = std::uint32_t;

struct Assignment {
    std::string key;
    std::string value;
};

/// Requests outside a transaction pass no identifier and act at once.
class ValueStore {
public:
    using Scope = std::optional<TransactionId>;

    /// @param device borrowed for the store's life. All values start at their defaults.
    explicit ValueStore(const Device& device) : device_(device) {}

    TransactionId start();

    /// Forgets a transaction and its uncommitted changes.
    Refusal end(TransactionId transaction);

    /// Makes what the transaction set visible to all. The transaction stays open.
    /// @param changed receives the keys whose values have changed, sorted.
    Refusal commit(TransactionId transaction, std::vector<std::string>& changed);

    /// Reads values as the transaction sees them.
    /// @param values receives one value for each key.
    Refusal get(Scope scope, std::span<const std::string> keys,
                std::vector<std::string>& values) const;

    Refusal set(Scope scope, Target target, std::span<const Assignment> assignments);
    Refusal reset(Scope scope, Target target, std::span<const std::string> keys);

    /// Asks whether a value could be set. Only unknown keys and transactions are refused.
    Refusal checkSet(Scope scope, const Assignment& assignment, bool& accepted) const;

private:
    /// Only values that were set; the others are at their defaults or, in a transaction, unchanged.
    using Values = std::unordered_map<std::string, std::string>;

    Refusal checkScope(Scope scope) const;
    Refusal checkKey(const std::string& key) const;
    Refusal checkTarget(Target target, const std::string& key) const;
    Refusal checkAssignment(Target target, const Assignment& assignment) const;
    const std::string& valueOf(Scope scope, const std::string& key) const;
    Values& valuesOf(Scope scope);

    const Device& device_;
    Values values_;
    std::unordered_map<TransactionId, Values> transactions_;
    TransactionId lastTransaction_ = 0;
};

} // namespace morvane::sim
