#include "handler_check.h"

#include "commands.h"
#include "output.h"
#include "variant.h"

#include <csignal>
#include <iostream>
#include <map>
#include <utility>

namespace morvane::ctl {

namespace {

const char* textOf(CheckOutcome outcome) {
    switch (outcome) {
    case CheckOutcome::pass:
        return "pass";
    case CheckOutcome::fail:
        return "FAIL";
    case CheckOutcome::notChecked:
        return "not checked";
    }
    return "";
}

/// Runs checks, and writes what came of each: a line at once, or all of it as JSON.
class Report {
public:
    explicit Report(bool asJson) : asJson_(asJson) {}

    void add(const std::string& name, const CheckResult& result) {
        ++counts_[result.outcome];
        if (asJson_)
            list_.push_back(
                {{"check", name}, {"outcome", textOf(result.outcome)}, {"seen", result.seen}});
        else
            std::cout << textOf(result.outcome) << ": " << name << ": " << result.seen << std::endl;
    }

    bool isAllPassed() const {
        return count(CheckOutcome::fail) + count(CheckOutcome::notChecked) == 0;
    }

    void finish() const {
        if (asJson_) {
            writeJson(list_);
            return;
        }
        std::cout << count(CheckOutcome::pass) << " passed, " << count(CheckOutcome::fail)
                  << " failed, " << count(CheckOutcome::notChecked) << " not checked\n";
    }

private:
    std::size_t count(CheckOutcome outcome) const {
        const auto found = counts_.find(outcome);
        return found == counts_.end() ? 0 : found->second;
    }

    bool asJson_;
    Json list_ = Json::array();
    std::map<CheckOutcome, std::size_t> counts_;
};

std::vector<Check> allChecks(const DeviceKeys& keys) {
    std::vector<Check> all;
    for (auto& part :
         {methodChecks(keys), transactionChecks(keys), definitionChecks(keys), refusalChecks()})
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

void runAll(CheckContext& context, Report& report) {
    for (const auto& check : allChecks(context.keys)) {
        const auto& why = context.session.whyStopped();
        if (check.applies)
            report.add(check.name, why.empty() ? check.run(context) : notChecked(why));
    }
}

// Runs after whatever has happened before.
void tidyUp(CheckContext& context, Report& report) {
    context.session.resume();
    report.add("the values are put back", putBack(context));
    const auto left = context.session.endAll();
    report.add("no transaction is left open",
               passOrFail(left.empty(), left.empty() ? "all are ended" : joined(left, "; ")));
}

} // namespace

CheckResult notChecked(std::string why) {
    return {CheckOutcome::notChecked, std::move(why)};
}

CheckResult passOrFail(bool passes, std::string seen) {
    return {passes ? CheckOutcome::pass : CheckOutcome::fail, std::move(seen)};
}

std::string noSample(Target target) {
    return target == Target::value ? "no value is known that could be set"
                                   : "no status is known that could be set";
}

ExitStatus checkHandler(const Settings& settings) {
    const auto variant = readVariant(settings);
    if (!variant)
        return ExitStatus::error;
    const DeviceKeys keys(*variant);
    std::string problem;
    HandlerSession session(settings, problem);
    if (!problem.empty())
        return settings.messages.fail(problem);
    std::signal(SIGPIPE, SIG_IGN); // whoever reads the lines may leave before the values are back
    CheckContext context{.session = session, .keys = keys};
    Report report(settings.json);
    const auto chosen = chooseSamples(context);
    if (session.isAbsent())
        return settings.messages.fail(session.whyStopped());
    if (!keys.hasAny(Target::status))
        settings.messages.note("there is no read-only parameter on this variant, so the methods "
                               "for statuses are not checked");
    report.add("keys to write to can be read", chosen);
    runAll(context, report);
    tidyUp(context, report);
    report.finish();
    if (session.isInterrupted())
        return settings.messages.fail("interrupted");
    return report.isAllPassed() ? ExitStatus::yes : ExitStatus::no;
}

} // namespace morvane::ctl
