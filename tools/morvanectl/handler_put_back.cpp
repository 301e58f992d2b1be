// The keys that a check of a Parameter Handler writes to: chosen before, and put back after it.

#include "check_calls.h"
#include "output.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

namespace morvane::ctl {

namespace {

using Texts = Calls::Texts;

constexpr std::size_t wantedSamples = 2; // for a bulk method
constexpr std::size_t mostTried = 50;    // keys, of each kind of parameters

// The lower, the better: whether a value is accepted, and what a reset does, should be known, and
// what never changes while the device runs is best left alone.
int rankOf(const CheckedParameter& parameter) {
    const bool isConstant = parameter.definition->access == AccessType::ACCESS_ROSTRICT;
    return (isConstant ? 8 : 0) + (parameter.isDecided ? 0 : 4) +
           (parameter.accepted.isRanged ? 0 : 2) + (parameter.byDefault ? 0 : 1);
}

/// A key with its parameter.
using Candidate = std::pair<const CheckedParameter*, std::string>;

// The first keys of all parameters, the best first, and then the second ones.
std::vector<Candidate> candidates(const std::vector<CheckedParameter>& parameters) {
    std::vector<const CheckedParameter*> ranked;
    ranked.reserve(parameters.size());
    for (const auto& parameter : parameters)
        ranked.push_back(&parameter);
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto* first, const auto* second) {
        return rankOf(*first) < rankOf(*second);
    });
    std::vector<Candidate> list;
    for (std::size_t i = 0; i < wantedSamples; ++i) {
        for (const auto* const parameter : ranked) {
            if (list.size() < mostTried && i < parameter->keys.size())
                list.emplace_back(parameter, parameter->keys[i]);
        }
    }
    return list;
}

// By any of the methods: one that does not work is not what the caller is about.
Texts readAnyhow(CheckContext& context, const Texts& keys, std::string& problem) {
    for (const auto* const method : {"get_bulk", "single_get_bulk", "get", "single_get"}) {
        const auto& row = handlerMethod(method);
        Calls calls(context);
        if (!row.isSingle())
            calls.start();
        Texts values;
        if (row.isBulk()) {
            values = calls.get(method, keys);
        } else {
            for (const auto& key : keys) {
                for (auto& value : calls.get(method, {key}))
                    values.push_back(std::move(value));
            }
        }
        if (calls.succeeded())
            return values;
        problem = calls.whyFailed();
    }
    return {};
}

void chooseFor(CheckContext& context, Target target, std::string& problem) {
    auto& samples = context.samples[target];
    for (const auto& [parameter, key] : candidates(context.keys.parameters(target))) {
        if (samples.size() == wantedSamples || !context.session.whyStopped().empty())
            return;
        const auto values = readAnyhow(context, {key}, problem);
        auto other = values.empty() || values.front().empty()
                         ? std::nullopt
                         : otherValue(*parameter, values.front());
        if (!other)
            continue;
        context.before.emplace(key, values.front());
        samples.push_back({key, values.front(), *std::move(other), parameter});
    }
}

/// Sets values by one of the ways, the quickest first.
struct Way {
    const char* set;
    const char* setStatus;
};

constexpr std::array ways{
    Way{"set_bulk", "set_status_bulk"},
    Way{"set", "set_status"},
    Way{"single_set", "single_set_status"},
};

// What is not as it was before, of what can be set to that.
struct Changed {
    Texts keys;
    Texts values; ///< of before
};

void setBack(CheckContext& context, const char* method, const Changed& changed) {
    const auto& row = handlerMethod(method);
    if (changed.keys.empty())
        return;
    Calls calls(context);
    if (!row.isSingle())
        calls.start();
    if (row.isBulk())
        calls.set(method, changed.keys, changed.values);
    else
        for (std::size_t i = 0; i < changed.keys.size(); ++i)
            calls.trySet(method, changed.keys[i], changed.values[i]);
    if (!row.isSingle())
        calls.commit();
}

// By kind of parameters. Nothing if the values cannot be read.
std::optional<std::map<Target, Changed>> findChanged(CheckContext& context, std::string& problem) {
    Texts keys;
    for (const auto& [key, value] : context.before)
        keys.push_back(key);
    const auto now = readAnyhow(context, keys, problem);
    if (now.size() != keys.size())
        return std::nullopt;
    const auto& statuses = context.samples[Target::status];
    std::map<Target, Changed> changed;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto& before = context.before.at(keys[i]);
        if (now[i] == before)
            continue;
        const bool isStatus =
            std::any_of(statuses.begin(), statuses.end(),
                        [&](const Sample& sample) { return sample.key == keys[i]; });
        auto& list = changed[isStatus ? Target::status : Target::value];
        list.keys.push_back(keys[i]);
        list.values.push_back(before);
    }
    return changed;
}

CheckResult unknownState(const CheckContext& context, const std::string& problem) {
    Texts keys;
    Texts values;
    for (const auto& [target, samples] : context.samples) {
        for (const auto& sample : samples) {
            keys.push_back(sample.key);
            values.push_back(sample.value);
        }
    }
    return passOrFail(keys.empty(), "whether they are is not known (" + problem + "); there were " +
                                        assignmentsText(keys, values));
}

} // namespace

CheckResult chooseSamples(CheckContext& context) {
    std::string problem;
    Texts keys;
    for (const auto target : {Target::value, Target::status}) {
        chooseFor(context, target, problem);
        for (const auto& sample : context.samples[target])
            keys.push_back(sample.key);
    }
    if (!context.session.whyStopped().empty())
        return context.session.isInterrupted() ? notChecked("interrupted")
                                               : passOrFail(false, problem);
    if (!keys.empty())
        return passOrFail(true, joined(keys, ", "));
    return problem.empty() ? notChecked("no value is known that could be set")
                           : passOrFail(false, problem);
}

CheckResult putBack(CheckContext& context) {
    std::string problem;
    std::size_t count = 0;
    for (const auto& way : ways) {
        auto changed = findChanged(context, problem);
        if (!changed)
            return unknownState(context, problem);
        if (changed->empty())
            break;
        count = std::max(count, (*changed)[Target::value].keys.size() +
                                    (*changed)[Target::status].keys.size());
        setBack(context, way.set, (*changed)[Target::value]);
        setBack(context, way.setStatus, (*changed)[Target::status]);
    }
    auto left = findChanged(context, problem);
    if (!left)
        return unknownState(context, problem);
    if (left->empty())
        return passOrFail(true, std::to_string(count) + (count == 1 ? " value" : " values") +
                                    " had changed");
    Texts texts;
    for (const auto& [target, changed] : *left) {
        for (std::size_t i = 0; i < changed.keys.size(); ++i)
            texts.push_back(changed.keys[i] + "=" + changed.values[i]);
    }
    return passOrFail(false, "cannot be set again: " + joined(texts, ", "));
}

} // namespace morvane::ctl
