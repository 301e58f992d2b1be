// Checks of a Parameter Handler: who sees a change, and when.

#include "check_calls.h"
#include "output.h"

#include <algorithm>
#include <array>

namespace morvane::ctl {

namespace {

/// The methods that write to parameters of one kind.
struct Writers {
    Target target;
    const char* set;
    const char* setBulk;
    const char* reset;
    const char* resetBulk;
    const char* singleSet;
    const char* singleSetBulk;
    const char* singleReset;
    const char* singleResetBulk;
};

constexpr std::array allWriters{
    Writers{Target::value, "set", "set_bulk", "reset", "reset_bulk", "single_set",
            "single_set_bulk", "single_reset", "single_reset_bulk"},
    Writers{Target::status, "set_status", "set_status_bulk", "reset_status", "reset_status_bulk",
            "single_set_status", "single_set_status_bulk", "single_reset_status",
            "single_reset_status_bulk"},
};

/// The samples that one check writes to: one, or two for a bulk method.
class Change {
public:
    Change(CheckContext& context, const char* method) : target_(handlerMethod(method).target) {
        const auto& samples = context.samples[target_];
        const std::size_t wanted = handlerMethod(method).isBulk() ? 2 : 1;
        for (const auto& sample : samples) {
            if (samples_.size() < wanted)
                samples_.push_back(&sample);
        }
        for (const auto* const sample : samples_)
            keys.push_back(sample->key);
    }

    bool isPossible() const { return !samples_.empty(); }
    CheckResult whyNot() const { return notChecked(noSample(target_)); }

    // Values that differ from those that are there.
    Calls::Texts otherThan(const Calls::Texts& values) const {
        Calls::Texts others;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto& sample = *samples_[i];
            others.push_back(isSameValue(values[i], sample.other) ? sample.value : sample.other);
        }
        return others;
    }

    // Nothing if the definitions do not decide all of them.
    std::optional<Calls::Texts> defaults() const {
        Calls::Texts values;
        for (const auto* const sample : samples_) {
            if (!sample->parameter->byDefault)
                return std::nullopt;
            values.push_back(*sample->parameter->byDefault);
        }
        return values;
    }

    Calls::Texts keys;

private:
    Target target_;
    std::vector<const Sample*> samples_;
};

bool isSame(const Calls::Texts& first, const Calls::Texts& second) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(), isSameValue);
}

std::string changeText(const Change& change, const Calls::Texts& wanted, const char* then) {
    return "set " + assignmentsText(change.keys, wanted) + then;
}

std::string changeText(const Change& change, const Calls::Texts& wanted, const char* then,
                       const Calls::Texts& seen) {
    return changeText(change, wanted, then) + "; others read " + assignmentsText(change.keys, seen);
}

// A method whose effect is not seen is used by no other check.
CheckResult isShown(CheckContext& context, const Writers& /*writers*/, const char* set) {
    const Change change(context, set);
    if (!change.isPossible())
        return change.whyNot();
    Calls calls(context);
    const auto wanted = change.otherThan(calls.read(change.keys));
    calls.start();
    calls.set(set, change.keys, wanted);
    calls.commit();
    const auto seen = calls.read(change.keys);
    auto result =
        calls.result(isSame(seen, wanted), changeText(change, wanted, ", committed", seen));
    if (result.outcome == CheckOutcome::fail)
        context.broken.emplace(set, result.seen);
    return result;
}

CheckResult isUnseen(CheckContext& context, const char* set, bool withEnd) {
    const Change change(context, set);
    if (!change.isPossible())
        return change.whyNot();
    Calls calls(context);
    const auto before = calls.read(change.keys);
    const auto wanted = change.otherThan(before);
    calls.start();
    calls.set(set, change.keys, wanted);
    if (withEnd) {
        const auto unfinished = calls.read(change.keys);
        if (calls.succeeded() && !isSame(unfinished, before))
            calls.giveUp("what is set is seen before the end");
        calls.end();
    }
    const auto seen = calls.read(change.keys);
    const auto* const then = withEnd ? ", ended" : "";
    return calls.result(isSame(seen, before), changeText(change, wanted, then, seen));
}

CheckResult isHidden(CheckContext& context, const Writers& /*writers*/, const char* set) {
    return isUnseen(context, set, false);
}

CheckResult isDiscarded(CheckContext& context, const Writers& /*writers*/, const char* set) {
    auto result = isUnseen(context, set, true);
    if (result.outcome == CheckOutcome::pass)
        context.discarded.insert(handlerMethod(set).target);
    return result;
}

// The key comes with the value that it has, and then with another one.
CheckResult isLaterOneSet(CheckContext& context, const Writers& writers, const char* setBulk) {
    const Change change(context, writers.set);
    if (!change.isPossible())
        return change.whyNot();
    Calls calls(context);
    const auto before = calls.read(change.keys);
    const auto wanted = change.otherThan(before);
    if (!calls.succeeded())
        return calls.result(false, {});
    const auto& key = change.keys.front();
    calls.start();
    calls.set(setBulk, {key, key}, {before.front(), wanted.front()});
    calls.commit();
    const auto seen = calls.read(change.keys);
    return calls.result(isSame(seen, wanted),
                        "set " + assignmentsText({key, key}, {before.front(), wanted.front()}) +
                            ", committed; others read " + assignmentsText(change.keys, seen));
}

// Makes sure that a reset has something to do.
void leaveDefaults(Calls& calls, const Writers& writers, const Change& change,
                   const Calls::Texts& defaults) {
    const auto before = calls.read(change.keys);
    if (!calls.succeeded() || !isSame(before, defaults))
        return;
    const auto wanted = change.otherThan(before);
    calls.start();
    calls.set(change.keys.size() > 1 ? writers.setBulk : writers.set, change.keys, wanted);
    calls.commit();
}

CheckResult isReset(CheckContext& context, const Writers& writers, const char* reset) {
    const Change change(context, reset);
    if (!change.isPossible())
        return change.whyNot();
    const auto defaults = change.defaults();
    if (!defaults)
        return notChecked("the definitions do not decide the default of " + change.keys.front());
    {
        Calls preparation(context);
        leaveDefaults(preparation, writers, change, *defaults);
        if (!preparation.succeeded())
            return notChecked(preparation.whyFailed());
    }
    Calls calls(context);
    const bool isInTransaction = handlerMethod(reset).isInTransaction();
    if (isInTransaction)
        calls.start();
    calls.reset(reset, change.keys);
    if (isInTransaction)
        calls.commit();
    const auto seen = calls.read(change.keys);
    return calls.result(isSame(seen, *defaults),
                        "others read " + assignmentsText(change.keys, seen) + "; the default is " +
                            assignmentsText(change.keys, *defaults));
}

CheckResult actsAtOnce(CheckContext& context, const Writers& /*writers*/, const char* singleSet) {
    const Change change(context, singleSet);
    if (!change.isPossible())
        return change.whyNot();
    Calls calls(context);
    const auto wanted = change.otherThan(calls.read(change.keys));
    calls.set(singleSet, change.keys, wanted);
    const auto seen = calls.read(change.keys);
    return calls.result(isSame(seen, wanted), changeText(change, wanted, "", seen));
}

CheckResult haveOwnNumbers(CheckContext& context) {
    Calls first(context);
    Calls second(context, Caller::other);
    const auto one = first.start();
    const auto another = second.start();
    if (!first.succeeded())
        return first.result(false, {});
    return second.result(one != another, std::to_string(one) + " and " + std::to_string(another));
}

// The daemon leaves a transaction open when a request fails.
CheckResult areIndependent(CheckContext& context) {
    const Change change(context, "set");
    if (!change.isPossible())
        return change.whyNot();
    Calls idle(context, Caller::other);
    const auto before = idle.read(change.keys);
    idle.start();
    idle.set("set", change.keys, before);
    if (!idle.succeeded())
        return notChecked(idle.whyFailed());
    const auto wanted = change.otherThan(before);
    Calls calls(context);
    calls.start();
    calls.set("set", change.keys, wanted);
    calls.commit();
    const auto seen = calls.read(change.keys);
    return calls.result(isSame(seen, wanted), changeText(change, wanted, ", committed", seen));
}

// What `morvanectl monitor` shows.
CheckResult isToldBySignal(CheckContext& context) {
    const Change change(context, "set");
    if (!change.isPossible())
        return change.whyNot();
    Calls calls(context);
    const auto wanted = change.otherThan(calls.read(change.keys));
    calls.start();
    calls.set("set", change.keys, wanted);
    context.session.forgetSignals();
    calls.commit();
    if (!calls.succeeded())
        return calls.result(false, {});
    const auto told = context.session.signalledKeys(change.keys);
    return calls.result(told == change.keys,
                        changeText(change, wanted, ", committed") + "; " +
                            (told ? "the signal has " + joined(*told, ", ")
                                  : std::string("no signal came within a second")));
}

// The daemon ends a transaction when the answer to its commit has come.
CheckResult isEndedAfterCommit(CheckContext& context) {
    Calls calls(context);
    calls.start();
    calls.commit();
    calls.end();
    return calls.result(true, "started, committed, ended");
}

CheckResult tellsWhatCanBeSet(CheckContext& context, const char* checkSet) {
    const auto& samples = context.samples[Target::value];
    const auto sample = std::find_if(samples.begin(), samples.end(), [](const Sample& candidate) {
        return invalidValue(*candidate.parameter).has_value();
    });
    if (sample == samples.end())
        return notChecked("no value is known that cannot be set");
    const auto wrong = *invalidValue(*sample->parameter);
    Calls calls(context);
    if (handlerMethod(checkSet).isInTransaction())
        calls.start();
    const bool takesOther = calls.checkSet(checkSet, sample->key, sample->other);
    const bool takesWrong = calls.checkSet(checkSet, sample->key, wrong);
    const auto answer = [&](const std::string& value, bool isTaken) {
        return sample->key + "=" + value + (isTaken ? ": yes" : ": no");
    };
    return calls.result(takesOther && !takesWrong,
                        answer(sample->other, takesOther) + ", " + answer(wrong, takesWrong));
}

using WriteCheck = CheckResult (*)(CheckContext&, const Writers&, const char*);

/// A check of one method of each kind of parameters.
struct WriteRow {
    const char* Writers::*method = nullptr;
    const char* what = nullptr;
    WriteCheck run = nullptr;
    bool (DeviceKeys::*applies)(Target) const = &DeviceKeys::hasAny;
};

constexpr std::array writeRows{
    WriteRow{&Writers::set, "is seen by others after the commit", isShown},
    WriteRow{&Writers::setBulk, "is seen by others after the commit", isShown},
    WriteRow{&Writers::set, "is not seen by others before the commit", isHidden},
    WriteRow{&Writers::setBulk, "is not seen by others before the commit", isHidden},
    WriteRow{&Writers::set, "is discarded by an end without a commit", isDiscarded},
    WriteRow{&Writers::setBulk, "of one key twice sets the later value", isLaterOneSet},
    WriteRow{&Writers::reset, "gives the default of this variant", isReset,
             &DeviceKeys::hasDefaults},
    WriteRow{&Writers::resetBulk, "gives the defaults of this variant", isReset,
             &DeviceKeys::hasDefaults},
    WriteRow{&Writers::singleSet, "is seen by others at once", actsAtOnce},
    WriteRow{&Writers::singleSetBulk, "is seen by others at once", actsAtOnce},
    WriteRow{&Writers::singleReset, "gives the default of this variant", isReset,
             &DeviceKeys::hasDefaults},
    WriteRow{&Writers::singleResetBulk, "gives the defaults of this variant", isReset,
             &DeviceKeys::hasDefaults},
};

} // namespace

std::vector<Check> transactionChecks(const DeviceKeys& keys) {
    std::vector<Check> checks{
        {"transactions have numbers of their own", haveOwnNumbers},
        {"a committed transaction can be ended", isEndedAfterCommit},
    };
    for (const auto& writers : allWriters) {
        for (const auto& row : writeRows) {
            const auto* const method = writers.*row.method;
            checks.push_back({std::string(method) + " " + row.what,
                              [&writers, &row, method](CheckContext& context) {
                                  return row.run(context, writers, method);
                              },
                              (keys.*row.applies)(writers.target)});
        }
    }
    const bool canSet = keys.hasAny(Target::value);
    checks.push_back({"an open transaction does not hold up another", areIndependent, canSet});
    checks.push_back({"the signal tells which key a commit has changed", isToldBySignal, canSet});
    for (const auto* const method : {"check_set", "single_check_set"})
        checks.push_back(
            {std::string(method) + " tells what can be set",
             [method](CheckContext& context) { return tellsWhatCanBeSet(context, method); }});
    return checks;
}

} // namespace morvane::ctl
