#include "transaction_calls.h"

#include "glib/variant.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <memory>
#include <utility>

namespace morvane::sim {

namespace {

enum class Operation {
    start,
    end,
    commit,
    get,
    set,
    checkSet,
    reset
};
enum class Inside {
    transaction,
    nothing
};
enum class Count {
    one,
    several
};

/// One method of the interface.
struct Method {
    std::string_view name;
    Operation operation;
    Inside inside = Inside::transaction; ///< else it has no transaction argument
    Count count = Count::one;            ///< else it takes lists
    Target target = Target::value;
};

constexpr std::array methods{
    Method{"start", Operation::start, Inside::nothing},
    Method{"end", Operation::end},
    Method{"commit", Operation::commit},
    Method{"get", Operation::get},
    Method{"single_get", Operation::get, Inside::nothing},
    Method{"set", Operation::set},
    Method{"single_set", Operation::set, Inside::nothing},
    Method{"set_status", Operation::set, Inside::transaction, Count::one, Target::status},
    Method{"single_set_status", Operation::set, Inside::nothing, Count::one, Target::status},
    Method{"check_set", Operation::checkSet},
    Method{"single_check_set", Operation::checkSet, Inside::nothing},
    Method{"reset", Operation::reset},
    Method{"single_reset", Operation::reset, Inside::nothing},
    Method{"reset_status", Operation::reset, Inside::transaction, Count::one, Target::status},
    Method{"single_reset_status", Operation::reset, Inside::nothing, Count::one, Target::status},
    Method{"get_bulk", Operation::get, Inside::transaction, Count::several},
    Method{"single_get_bulk", Operation::get, Inside::nothing, Count::several},
    Method{"set_bulk", Operation::set, Inside::transaction, Count::several},
    Method{"single_set_bulk", Operation::set, Inside::nothing, Count::several},
    Method{"set_status_bulk", Operation::set, Inside::transaction, Count::several, Target::status},
    Method{"single_set_status_bulk", Operation::set, Inside::nothing, Count::several,
           Target::status},
    Method{"reset_bulk", Operation::reset, Inside::transaction, Count::several},
    Method{"single_reset_bulk", Operation::reset, Inside::nothing, Count::several},
    Method{"reset_status_bulk", Operation::reset, Inside::transaction, Count::several,
           Target::status},
    Method{"single_reset_status_bulk", Operation::reset, Inside::nothing, Count::several,
           Target::status},
};

/// The arguments of a call, from left to right.
class Arguments {
public:
    explicit Arguments(GVariant* parameters) : parameters_(parameters) {}

    std::uint32_t number() { return g_variant_get_uint32(next().get()); }

    /// One string, or the strings of a list.
    std::vector<std::string> strings(Count count) {
        const auto argument = next();
        if (count == Count::one)
            return {g_variant_get_string(argument.get(), nullptr)};
        return stringsOf(argument.get());
    }

private:
    OwnedVariant next() {
        return OwnedVariant(g_variant_get_child_value(parameters_, position_++));
    }

    GVariant* parameters_;
    gsize position_ = 0;
};

Outcome refused(Refusal refusal) {
    return {.refusal = std::move(refusal), .result = {}, .changed = {}};
}

Outcome commit(ValueStore& values, TransactionId transaction) {
    std::vector<std::string> changed;
    if (auto refusal = values.commit(transaction, changed))
        return refused(std::move(refusal));
    return {.refusal = {}, .result = {}, .changed = std::move(changed)};
}

Outcome get(ValueStore& values, ValueStore::Scope scope, Count count, Arguments& arguments) {
    if (count == Count::several)
        arguments.number(); // the option, which means nothing here
    std::vector<std::string> read;
    if (auto refusal = values.get(scope, arguments.strings(count), read))
        return refused(std::move(refusal));
    Outcome outcome;
    if (count == Count::one)
        outcome.result = std::move(read.front());
    else
        outcome.result = std::move(read);
    return outcome;
}

Outcome set(ValueStore& values, ValueStore::Scope scope, const Method& method,
            Arguments& arguments) {
    auto keys = arguments.strings(method.count);
    auto newValues = arguments.strings(method.count);
    if (keys.size() != newValues.size())
        return refused(std::to_string(keys.size()) + " names with " +
                       std::to_string(newValues.size()) + " values");
    std::vector<Assignment> assignments;
    for (std::size_t i = 0; i < keys.size(); ++i)
        assignments.push_back({std::move(keys[i]), std::move(newValues[i])});
    return refused(values.set(scope, method.target, assignments));
}

Outcome checkSet(ValueStore& values, ValueStore::Scope scope, Arguments& arguments) {
    auto key = arguments.strings(Count::one).front();
    auto value = arguments.strings(Count::one).front();
    bool accepted = false;
    if (auto refusal = values.checkSet(scope, {std::move(key), std::move(value)}, accepted))
        return refused(std::move(refusal));
    Outcome outcome;
    outcome.result = accepted;
    return outcome;
}

// Null if there is no such method.
const Method* findMethod(std::string_view name) {
    const auto* const row = std::find_if(methods.begin(), methods.end(),
                                         [name](const Method& m) { return m.name == name; });
    return row == methods.end() ? nullptr : row;
}

} // namespace

bool isMethod(std::string_view name) {
    return findMethod(name) != nullptr;
}

Outcome perform(ValueStore& values, std::string_view method, GVariant* parameters) {
    const auto* const row = findMethod(method);
    assert(row != nullptr);
    Arguments arguments(parameters);
    ValueStore::Scope scope;
    if (row->inside == Inside::transaction)
        scope = arguments.number();
    switch (row->operation) {
    case Operation::start: {
        Outcome outcome;
        outcome.result = values.start();
        return outcome;
    }
    case Operation::end:
        return refused(values.end(*scope));
    case Operation::commit:
        return commit(values, *scope);
    case Operation::get:
        return get(values, scope, row->count, arguments);
    case Operation::set:
        return set(values, scope, *row, arguments);
    case Operation::checkSet:
        return checkSet(values, scope, arguments);
    case Operation::reset:
        return refused(values.reset(scope, row->target, arguments.strings(row->count)));
    }
    return {};
}

GVariant* replyBody(const Outcome& outcome) {
    struct Visitor {
        GVariant* operator()(std::monostate) const { return g_variant_new("()"); }
        GVariant* operator()(std::uint32_t number) const { return g_variant_new("(u)", number); }
        GVariant* operator()(bool truth) const {
            return g_variant_new("(b)", static_cast<gboolean>(truth));
        }
        GVariant* operator()(const std::string& text) const {
            return g_variant_new("(s)", text.c_str());
        }
        GVariant* operator()(const std::vector<std::string>& texts) const {
            return g_variant_new("(@as)", stringArray(texts));
        }
    };
    return std::visit(Visitor{}, outcome.result);
}

} // namespace morvane::sim
