#include "value_store.h"

#include <algorithm>

namespace morvane::sim {

TransactionId ValueStore::start() {
    transactions_[++lastTransaction_];
    return lastTransaction_;
}

Refusal ValueStore::end(TransactionId transaction) {
    if (auto refusal = checkScope(transaction))
        return refusal;
    transactions_.erase(transaction);
    return {};
}

Refusal ValueStore::commit(TransactionId transaction, std::vector<std::string>& changed) {
    if (auto refusal = checkScope(transaction))
        return refusal;
    auto& set = transactions_[transaction];
    for (auto& [key, value] : set) {
        if (valueOf({}, key) == value)
            continue;
        changed.push_back(key);
        values_[key] = std::move(value);
    }
    set.clear();
    std::sort(changed.begin(), changed.end());
    return {};
}

Refusal ValueStore::get(Scope scope, std::span<const std::string> keys,
                        std::vector<std::string>& values) const {
    if (auto refusal = checkScope(scope))
        return refusal;
    for (const auto& key : keys) {
        if (auto refusal = checkKey(key))
            return refusal;
        if (device_.find(key)->access == AccessType::ACCESS_WO)
            return key + " is write-only";
    }
    for (const auto& key : keys)
        values.push_back(valueOf(scope, key));
    return {};
}

Refusal ValueStore::set(Scope scope, Target target, std::span<const Assignment> assignments) {
    if (auto refusal = checkScope(scope))
        return refusal;
    for (const auto& assignment : assignments) {
        if (auto refusal = checkAssignment(target, assignment))
            return refusal;
    }
    auto& values = valuesOf(scope);
    for (const auto& [key, value] : assignments)
        values[key] = value;
    return {};
}

Refusal ValueStore::reset(Scope scope, Target target, std::span<const std::string> keys) {
    if (auto refusal = checkScope(scope))
        return refusal;
    for (const auto& key : keys) {
        if (auto refusal = checkTarget(target, key))
            return refusal;
    }
    auto& values = valuesOf(scope);
    for (const auto& key : keys)
        values[key] = device_.find(key)->defaultValue;
    return {};
}

Refusal ValueStore::checkSet(Scope scope, const Assignment& assignment, bool& accepted) const {
    if (auto refusal = checkScope(scope))
        return refusal;
    if (auto refusal = checkKey(assignment.key))
        return refusal;
    accepted = !checkAssignment(Target::value, assignment);
    return {};
}

Refusal ValueStore::checkScope(Scope scope) const {
    if (!scope || transactions_.contains(*scope))
        return {};
    return "unknown transaction " + std::to_string(*scope);
}

Refusal ValueStore::checkKey(const std::string& key) const {
    if (device_.find(key) != nullptr)
        return {};
    return "unknown parameter " + key;
}

Refusal ValueStore::checkTarget(Target target, const std::string& key) const {
    if (auto refusal = checkKey(key))
        return refusal;
    const bool readOnly = device_.find(key)->isReadOnly();
    if (target == Target::value && readOnly)
        return key + " is read-only, only its status can be set";
    if (target == Target::status && !readOnly)
        return key + " is not read-only and has no status";
    return {};
}

Refusal ValueStore::checkAssignment(Target target, const Assignment& assignment) const {
    if (auto refusal = checkTarget(target, assignment.key))
        return refusal;
    if (!device_.find(assignment.key)->accepted.accepts(assignment.value))
        return assignment.key + " cannot be set to \"" + assignment.value + "\"";
    return {};
}

const std::string& ValueStore::valueOf(Scope scope, const std::string& key) const {
    if (scope) {
        const auto& set = transactions_.at(*scope);
        if (const auto found = set.find(key); found != set.end())
            return found->second;
    }
    const auto found = values_.find(key);
    return found == values_.end() ? device_.find(key)->defaultValue : found->second;
}

ValueStore::Values& ValueStore::valuesOf(Scope scope) {
    return scope ? transactions_[*scope] : values_;
}

} // namespace morvane::sim
