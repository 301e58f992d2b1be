// Checks of a Parameter Handler: that its keys, defaults and ranges are those of the definition
// files, and that it answers for all keys in one call. Nothing is committed here.

#include "check_calls.h"
#include "engine/preset_file.h"
#include "output.h"
#include "text/line_reader.h"
#include "text/request_texts.h"
#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <sstream>
#include <utility>

namespace morvane::ctl {

namespace {

using Texts = Calls::Texts;

constexpr std::size_t mostShown = 8;         // keys that are named
constexpr std::size_t mostParameters = 1000; // whose ranges are tried

Texts allKeys(const CheckContext& context) {
    auto keys = context.keys.keys(Target::value);
    const auto status = context.keys.keys(Target::status);
    keys.insert(keys.end(), status.begin(), status.end());
    return keys;
}

std::size_t bytesOf(const Texts& texts) {
    ArraySize size;
    for (const auto& text : texts)
        size.add(text);
    return size.bytes();
}

std::string timeText(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    std::ostringstream text;
    text.precision(1);
    text << std::fixed << elapsed.count() << " ms";
    return text.str();
}

std::string countText(std::size_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

// Of what fails in one call, the keys that also fail in calls of their own, found by halving.
void findUnreadable(CheckContext& context, std::span<const std::string> keys, Texts& found) {
    if (found.size() >= mostShown || !context.session.whyStopped().empty())
        return;
    Calls calls(context);
    calls.start();
    const Texts some(keys.begin(), keys.end());
    calls.get(keys.size() == 1 ? "get" : "get_bulk", some);
    if (calls.succeeded())
        return;
    if (keys.size() == 1) {
        found.push_back(keys.front());
        return;
    }
    findUnreadable(context, keys.first(keys.size() / 2), found);
    findUnreadable(context, keys.subspan(keys.size() / 2), found);
}

std::string unreadableText(CheckContext& context, const Texts& keys) {
    Texts unreadable;
    findUnreadable(context, keys, unreadable);
    if (unreadable.empty())
        return {};
    return "; cannot be read: " + joined(unreadable, ", ") +
           (unreadable.size() < mostShown ? "" : ", and maybe more");
}

std::string sizeText(std::size_t ofKeys, std::size_t ofValues) {
    return std::to_string(ofKeys) + " bytes of keys and " + std::to_string(ofValues) +
           " of values, where a list on the bus holds " + std::to_string(ArraySize::maximum);
}

// A list that the bus does not carry would cost the connection.
CheckResult areAllRead(CheckContext& context) {
    const auto keys = allKeys(context);
    if (keys.empty())
        return notChecked("there is no key on this variant");
    if (bytesOf(keys) > ArraySize::maximum)
        return passOrFail(false, sizeText(bytesOf(keys), 0));
    Calls calls(context);
    calls.start();
    Texts values;
    const auto time = timeText([&] { values = calls.get("get_bulk", keys); });
    for (std::size_t i = 0; i < values.size(); ++i)
        context.live.emplace(keys[i], values[i]);
    // Nothing is committed from here on. Should that go wrong, the values are known.
    for (const auto& key : values.empty() ? Texts() : context.keys.keys(Target::value))
        context.before.emplace(key, context.live.at(key)); // what was there is older
    auto result = calls.result(true, countText(keys.size(), "key") + " in " + time + "; " +
                                         sizeText(bytesOf(keys), bytesOf(values)));
    if (result.outcome == CheckOutcome::fail)
        result.seen += unreadableText(context, keys);
    return result;
}

constexpr const char* discardNotSeen = "an end without a commit has not been seen to discard";

// Why all keys cannot be written to in a transaction that is then thrown away; empty if they can.
std::string whyNotInBulk(const CheckContext& context, Target target) {
    if (context.keys.parameters(target).empty())
        return noSample(target);
    if (context.live.empty())
        return "the keys could not be read";
    return context.discarded.contains(target) ? "" : discardNotSeen;
}

Texts liveValues(const CheckContext& context, const Texts& keys) {
    Texts values;
    for (const auto& key : keys)
        values.push_back(context.live.at(key));
    return values;
}

// A load of what a store has just written.
CheckResult areAllSet(CheckContext& context, Target target) {
    const auto why = whyNotInBulk(context, target);
    if (!why.empty())
        return notChecked(why);
    const auto keys = context.keys.keys(target);
    const auto values = liveValues(context, keys);
    Calls calls(context);
    calls.start();
    const auto time = timeText(
        [&] { calls.set(target == Target::value ? "set_bulk" : "set_status_bulk", keys, values); });
    return calls.result(true, countText(keys.size(), "key") + " in " + time);
}

/// A key with what is wrong with its value.
using Problems = Texts;

CheckResult noProblems(const Calls& calls, const Problems& problems, std::string tried) {
    return calls.result(problems.empty(),
                        problems.empty() ? std::move(tried) : shortList(problems));
}

// Whether a transaction reads what it has set, which the daemon does not need.
bool seesItsOwnChanges(CheckContext& context, Target target) {
    const auto& samples = context.samples[target];
    if (samples.empty())
        return false;
    const auto& sample = samples.front();
    Calls calls(context);
    const auto before = calls.read({sample.key});
    const auto wanted = before == Texts{sample.other} ? sample.value : sample.other;
    calls.start();
    calls.set(target == Target::value ? "set" : "set_status", {sample.key}, {wanted});
    return calls.get("get", {sample.key}) == Texts{wanted};
}

// Without a commit, the values that the transaction sees are those that it would set.
CheckResult areDefaultsThose(CheckContext& context, Target target) {
    const auto why = whyNotInBulk(context, target);
    if (!why.empty())
        return notChecked(why);
    Texts keys;
    Texts defaults;
    for (const auto& parameter : context.keys.parameters(target)) {
        if (!parameter.byDefault)
            continue;
        keys.insert(keys.end(), parameter.keys.begin(), parameter.keys.end());
        defaults.resize(keys.size(), *parameter.byDefault);
    }
    Calls calls(context);
    if (!seesItsOwnChanges(context, target))
        return notChecked("a transaction does not read what it has set");
    calls.start();
    calls.reset(target == Target::value ? "reset_bulk" : "reset_status_bulk", keys);
    const auto values = calls.get("get_bulk", keys);
    Problems problems;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!isSameValue(values[i], defaults[i]))
            problems.push_back(keys[i] + "=" + values[i] + ", not " + defaults[i]);
    }
    return noProblems(calls, problems, countText(keys.size(), "key"));
}

/// Sets the first key of a parameter to some values, and adds what is wrong with the answers.
using TryValues = void (*)(CheckContext&, Calls&, const char* set, const CheckedParameter&,
                           Problems&);

std::string refusedText(const std::string& key, const std::string& value,
                        const std::string& error) {
    return key + "=" + value + " was refused: " + error;
}

void tryEnds(CheckContext& /*context*/, Calls& calls, const char* set,
             const CheckedParameter& parameter, Problems& problems) {
    const auto& key = parameter.keys.front();
    for (const auto& value : endsOfRanges(parameter)) {
        if (const auto error = calls.trySet(set, key, value))
            problems.push_back(refusedText(key, value, *error));
    }
}

void tryInvalid(CheckContext& context, Calls& calls, const char* set,
                const CheckedParameter& parameter, Problems& problems) {
    const auto& key = parameter.keys.front();
    const auto value = *invalidValue(parameter);
    if (const auto error = calls.trySet(set, key, value))
        context.refusals.push_back({set, *error});
    else if (calls.succeeded())
        problems.push_back(key + "=" + value + " was set");
}

// In one transaction for all parameters whose ranges the definitions decide.
CheckResult tryRanges(CheckContext& context, Target target, TryValues tryValues) {
    const auto* const set = target == Target::value ? "set" : "set_status";
    if (context.broken.contains(set))
        return notChecked(std::string(set) + " does not work");
    if (!context.discarded.contains(target))
        return notChecked(discardNotSeen);
    Calls calls(context);
    calls.start();
    Problems problems;
    std::size_t tried = 0;
    for (const auto& parameter : context.keys.parameters(target)) {
        if (!parameter.hasDecidedRange() || tried == mostParameters || !calls.succeeded())
            continue;
        tryValues(context, calls, set, parameter, problems);
        ++tried;
    }
    return noProblems(calls, problems, countText(tried, "parameter"));
}

CheckResult areEndsAccepted(CheckContext& context, Target target) {
    return tryRanges(context, target, tryEnds);
}

CheckResult areOthersRefused(CheckContext& context, Target target) {
    return tryRanges(context, target, tryInvalid);
}

// What the file has of a key after a store, as a load reads it.
std::map<std::string, std::string>
throughPresetFile(const std::map<std::string, std::string>& values) {
    std::string lines;
    for (const auto& [key, value] : values)
        writePresetEntry(lines, key, value);
    std::map<std::string, std::string> read;
    const OwnedStream stream(lines.empty() ? nullptr : fmemopen(lines.data(), lines.size(), "r"));
    if (stream)
        readPresetFile(stream.get(), [&](const PresetEntry& entry) {
            read.insert_or_assign(presetKey(entry), std::string(entry.value));
        });
    return read;
}

// An empty value would even end the file.
CheckResult areAllKept(CheckContext& context) {
    if (context.live.empty())
        return notChecked("the keys could not be read");
    const auto read = throughPresetFile(context.live);
    Problems problems;
    for (const auto& [key, value] : context.live) {
        const auto found = read.find(key);
        if (found == read.end() || found->second != value)
            problems.push_back(key + "=\"" + printableText(value) + "\"");
    }
    return passOrFail(problems.empty(),
                      problems.empty() ? countText(read.size(), "value") : shortList(problems));
}

/// A check of the parameters of one kind.
struct TargetRow {
    const char* name;
    Target target;
    CheckResult (*run)(CheckContext&, Target);
    bool (DeviceKeys::*applies)(Target) const;
};

constexpr std::array targetRows{
    TargetRow{"all values can be set in one call", Target::value, areAllSet, &DeviceKeys::hasAny},
    TargetRow{"all statuses can be set in one call", Target::status, areAllSet,
              &DeviceKeys::hasAny},
    TargetRow{"the defaults of values are those of the definitions", Target::value,
              areDefaultsThose, &DeviceKeys::hasDefaults},
    TargetRow{"the defaults of statuses are those of the definitions", Target::status,
              areDefaultsThose, &DeviceKeys::hasDefaults},
    TargetRow{"values within the ranges are accepted", Target::value, areEndsAccepted,
              &DeviceKeys::hasRanges},
    TargetRow{"statuses within the ranges are accepted", Target::status, areEndsAccepted,
              &DeviceKeys::hasRanges},
    TargetRow{"values outside the ranges are refused", Target::value, areOthersRefused,
              &DeviceKeys::hasRanges},
    TargetRow{"statuses outside the ranges are refused", Target::status, areOthersRefused,
              &DeviceKeys::hasRanges},
};

} // namespace

std::vector<Check> definitionChecks(const DeviceKeys& keys) {
    std::vector<Check> checks{
        {"all keys can be read in one call", areAllRead},
        {"a preset file keeps all values", areAllKept},
    };
    for (const auto& row : targetRows)
        checks.push_back({row.name,
                          [&row](CheckContext& context) { return row.run(context, row.target); },
                          (keys.*row.applies)(row.target)});
    return checks;
}

} // namespace morvane::ctl
