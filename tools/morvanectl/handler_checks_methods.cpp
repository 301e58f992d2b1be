// Checks of a Parameter Handler: that every method is there, takes what the daemon sends and
// returns what it expects. Most are called in a transaction that is never committed; those that act
// at once set values that are there already.

#include "check_calls.h"

#include <algorithm>

namespace morvane::ctl {

namespace {

// Calls a method that reads or writes a key.
void callWith(Calls& calls, const HandlerMethod& method, const Sample& sample) {
    const auto* const name = method.name.data();
    if (method.name.ends_with("check_set"))
        calls.checkSet(name, sample.key, sample.value);
    else if (method.resets())
        calls.reset(name, {sample.key});
    else if (method.writes())
        calls.set(name, {sample.key}, {sample.value});
    else
        calls.get(name, {sample.key});
}

void callMethod(Calls& calls, const HandlerMethod& method, const Sample& sample) {
    if (!method.isSingle())
        calls.start();
    if (method.name == "commit")
        calls.commit();
    else if (method.name != "start" && method.name != "end")
        callWith(calls, method, sample);
    if (method.name == "end") // the others' transactions are ended in any case
        calls.end();
}

std::string typesText(const HandlerMethod& method) {
    const auto inner = [](std::string_view type) { return type.substr(1, type.size() - 2); };
    const auto list = [](std::string_view types) {
        return types.empty() ? "nothing" : std::string(types);
    };
    return "takes " + list(inner(method.takes)) + ", returns " + list(inner(method.returns));
}

CheckResult checkMethod(CheckContext& context, const HandlerMethod& method) {
    const auto& samples = context.samples[method.target];
    if (samples.empty())
        return notChecked(noSample(method.target));
    Calls calls(context);
    callMethod(calls, method, samples.front());
    auto result = calls.result(true, typesText(method));
    if (result.outcome != CheckOutcome::pass)
        context.broken.emplace(method.name, result.seen);
    return result;
}

// The same key several times, so that the order is seen in any case: a, b, a.
CheckResult checkBulkGet(CheckContext& context, const char* method) {
    const auto& samples = context.samples[Target::value];
    if (samples.empty())
        return notChecked(noSample(Target::value));
    const Calls::Texts keys{samples.front().key, samples.back().key, samples.front().key};
    Calls calls(context);
    const auto expected = calls.read(keys);
    if (handlerMethod(method).isInTransaction())
        calls.start();
    const auto values = calls.get(method, keys);
    auto result = calls.result(values == expected, assignmentsText(keys, values));
    if (result.outcome == CheckOutcome::fail)
        context.broken.emplace(method, result.seen);
    return result;
}

} // namespace

std::vector<Check> methodChecks(const DeviceKeys& keys) {
    std::vector<Check> checks;
    checks.reserve(handlerMethods.size());
    for (const auto& method : handlerMethods)
        checks.push_back({"method " + std::string(method.name),
                          [&method](CheckContext& context) { return checkMethod(context, method); },
                          keys.hasAny(method.target)});
    for (const auto* const method : {"get_bulk", "single_get_bulk"})
        checks.push_back({std::string(method) + " answers a value for each key, in their order",
                          [method](CheckContext& context) { return checkBulkGet(context, method); },
                          keys.hasAny(Target::value)});
    return checks;
}

} // namespace morvane::ctl
