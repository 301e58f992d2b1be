// morvanectl handler-check: whether a running Parameter Handler does what the daemon relies on.
// What the checks share: each is a small function that makes calls and says what it has seen.
//
//   handler_put_back.cpp             the keys that are written to
//   handler_checks_methods.cpp       every method, alone
//   handler_checks_transactions.cpp  who sees a change, and when
//   handler_checks_refusals.cpp      what must be refused, and how
//   handler_checks_definitions.cpp   all keys, their defaults and ranges
#pragma once

#include "device_keys.h"
#include "handler_session.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

enum class CheckOutcome {
    pass,
    fail,
    notChecked
};

/// What came of a check.
struct CheckResult {
    CheckOutcome outcome = CheckOutcome::notChecked;
    std::string seen; ///< or why it was not checked
};

CheckResult notChecked(std::string why);
CheckResult passOrFail(bool passes, std::string seen);

/// Why there is no key to write to.
std::string noSample(Target target);

/// A key to write to, on behalf of all.
struct Sample {
    std::string key;
    std::string value; ///< to be put back
    std::string other; ///< which it can have, too
    const CheckedParameter* parameter = nullptr;
};

/// An error that answered a call which has to be refused.
struct Refusal {
    std::string_view method;
    std::string text;
};

/// What the checks work on, and what the earlier ones leave to the later.
struct CheckContext {
    HandlerSession& session;
    const DeviceKeys& keys;
    std::map<Target, std::vector<Sample>> samples{}; ///< two of each, if the device has them

    std::map<std::string_view, std::string> broken{}; ///< methods that do not work, and why
    std::map<std::string, std::string> before{};      ///< what is put back, by key
    std::vector<Refusal> refusals{};
    std::map<std::string, std::string> live{}; ///< all values at once, when they were read
    std::set<Target> discarded{}; ///< of which an end without a commit has been seen to discard it
};

struct Check {
    std::string name;
    std::function<CheckResult(CheckContext&)> run;
    bool applies = true; ///< whether the device has what it is about; else it is left out
};

// In the order in which they run. Those of methods come first: a method that does not work by
// itself is used by no other check.
std::vector<Check> methodChecks(const DeviceKeys& keys);
std::vector<Check> transactionChecks(const DeviceKeys& keys);
std::vector<Check> definitionChecks(const DeviceKeys& keys);
std::vector<Check> refusalChecks();

/// Chooses the keys to write to, by reading them.
CheckResult chooseSamples(CheckContext& context);

/// Puts the values back that differ from `before`, by any method that works.
CheckResult putBack(CheckContext& context);

} // namespace morvane::ctl
