// Checks of a Parameter Handler: what it must refuse, and how. The daemon takes an error that
// begins with the mark of a refusal as final, and repeats a call that has ended with any other.

#include "check_calls.h"
#include "output.h"
#include "paramhandler/error_log.h"

#include <algorithm>

namespace morvane::ctl {

namespace {

/// Makes calls that must be refused, and collects those that were not.
class RefusalCheck {
public:
    explicit RefusalCheck(CheckContext& context) : context_(context) {}

    // The method is called if it is known to work.
    void expect(Calls& calls, const char* method, std::initializer_list<GVariant*> arguments,
                std::uint32_t transaction) {
        const auto reply = calls.call(method, arguments, transaction);
        if (reply.end == Reply::End::stopped)
            whyStopped_ = std::string(method) + ": " + reply.text;
        else if (reply.end == Reply::End::answered)
            accepted_.emplace_back(method);
        else
            context_.refusals.push_back({handlerMethod(method).name, reply.text});
        if (reply.end == Reply::End::error)
            refused_.emplace_back(method);
    }

    bool isStopped() const { return !whyStopped_.empty(); }

    CheckResult result() const {
        if (isStopped())
            return context_.session.isInterrupted() ? notChecked("interrupted")
                                                    : passOrFail(false, whyStopped_);
        if (!accepted_.empty())
            return passOrFail(false, "accepted by " + shortList(accepted_));
        if (refused_.empty())
            return notChecked("no method works that could refuse it");
        return passOrFail(true, "refused by all " + std::to_string(refused_.size()) + " methods");
    }

private:
    CheckContext& context_;
    std::vector<std::string> accepted_;
    std::vector<std::string> refused_;
    std::string whyStopped_;
};

GVariant* argument(const HandlerMethod& method, const std::string& text) {
    return method.isBulk() ? stringArray({text}) : g_variant_new_string(text.c_str());
}

void expectOn(RefusalCheck& check, Calls& calls, const HandlerMethod& method,
              std::uint32_t transaction, const std::string& key, const std::string& value) {
    const auto* const name = method.name.data();
    if (method.name == "end" || method.name == "commit")
        check.expect(calls, name, {}, transaction);
    else if (method.writes() && !method.resets())
        check.expect(calls, name, {argument(method, key), argument(method, value)}, transaction);
    else
        check.expect(calls, name, {argument(method, key)}, transaction);
}

bool isAboutKeys(const HandlerMethod& method) {
    return method.name != "start" && method.name != "end" && method.name != "commit" &&
           !method.name.ends_with("check_set"); // which may also say no
}

CheckResult isUnknownKeyRefused(CheckContext& context) {
    Calls calls(context);
    const auto transaction = calls.start();
    RefusalCheck check(context);
    for (const auto& method : handlerMethods) {
        const bool isPossible = method.isSingle() || (transaction != 0 && calls.succeeded());
        if (isAboutKeys(method) && isPossible && !context.broken.contains(method.name) &&
            !check.isStopped())
            expectOn(check, calls, method, transaction, context.keys.unknownKey(), "0");
    }
    return check.result();
}

CheckResult isEndedTransactionRefused(CheckContext& context) {
    Calls calls(context);
    const auto transaction = calls.start();
    calls.end();
    if (!calls.succeeded())
        return notChecked(calls.whyFailed());
    RefusalCheck check(context);
    for (const auto& method : handlerMethods) {
        const auto& samples = context.samples[method.target];
        if (!method.isInTransaction() || method.name.ends_with("check_set") || samples.empty() ||
            context.broken.contains(method.name) || check.isStopped())
            continue;
        expectOn(check, calls, method, transaction, samples.front().key, samples.front().value);
    }
    return check.result();
}

CheckResult isEveryRefusalMarked(CheckContext& context) {
    if (context.refusals.empty())
        return notChecked("nothing was refused");
    const auto& refusals = context.refusals;
    const auto unmarked = std::find_if(refusals.begin(), refusals.end(), [](const auto& refusal) {
        return !isRefusal(refusal.text);
    });
    if (unmarked == refusals.end())
        return passOrFail(true, "all " + std::to_string(refusals.size()) + ", such as \"" +
                                    refusals.front().text + "\"");
    return passOrFail(false, std::string(unmarked->method) + " answered \"" + unmarked->text +
                                 "\", which the daemon takes for a lost call and repeats");
}

} // namespace

std::vector<Check> refusalChecks() {
    return {
        {"a key that is not there is refused", isUnknownKeyRefused},
        {"a transaction that has ended is refused", isEndedTransactionRefused},
        {"every refusal begins with dbus_norvix_transaction", isEveryRefusalMarked},
    };
}

} // namespace morvane::ctl
