#include "handler_session.h"

#include "handler_methods.h"

#include <array>
#include <chrono>
#include <utility>

namespace morvane::ctl {

namespace {

// A call of the daemon takes this long at most, and is repeated then.
constexpr std::chrono::seconds daemonTimeLimit{25};

Settings withTimeLimit(Settings settings) {
    if (!settings.timeLimit)
        settings.timeLimit = daemonTimeLimit;
    return settings;
}

std::string unexpectedType(const char* method, const OwnedVariant& values) {
    return std::string("it answered ") + g_variant_get_type_string(values.get()) + ", not " +
           handlerMethod(method).returns;
}

std::uint32_t numberIn(GVariant* tuple) {
    guint32 number = 0;
    const OwnedVariant first(g_variant_get_child_value(tuple, 0));
    if (g_variant_is_of_type(first.get(), G_VARIANT_TYPE_UINT32) != FALSE)
        number = g_variant_get_uint32(first.get());
    return number;
}

} // namespace

HandlerSession::HandlerSession(const Settings& settings, std::string& error)
    : self_(withTimeLimit(settings), error),
      other_(withTimeLimit(settings), error) {
    if (!error.empty())
        return;
    interruption_.emplace();
    subscription_ = g_dbus_connection_signal_subscribe(
        self_.connection(), parameterHandler.name, parameterHandler.name, "transaction",
        parameterHandler.path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr);
}

HandlerSession::~HandlerSession() {
    if (subscription_ != 0)
        g_dbus_connection_signal_unsubscribe(self_.connection(), subscription_);
}

void HandlerSession::onSignal(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                              const gchar* /*path*/, const gchar* /*interface*/,
                              const gchar* /*signal*/, GVariant* arguments, gpointer session) {
    auto& signalled = static_cast<HandlerSession*>(session)->signalled_;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(as)")) == FALSE) {
        signalled.push_back(
            {std::string("values of type ") + g_variant_get_type_string(arguments)});
        return;
    }
    const OwnedVariant keys(g_variant_get_child_value(arguments, 0));
    signalled.push_back(stringsOf(keys.get()));
}

std::optional<HandlerSession::Keys> HandlerSession::signalledKeys(const Keys& expected) {
    constexpr guint mostMilliseconds = 1000;
    bool isTimeOver = false;
    const GSourceFunc endWaiting = [](gpointer over) -> gboolean {
        *static_cast<bool*>(over) = true;
        return G_SOURCE_CONTINUE;
    };
    const auto timer = g_timeout_add(mostMilliseconds, endWaiting, &isTimeOver);
    while ((signalled_.empty() || signalled_.back() != expected) && !isTimeOver && !isInterrupted())
        g_main_context_iteration(nullptr, TRUE);
    g_source_remove(timer);
    return signalled_.empty() ? std::nullopt : std::optional(signalled_.back());
}

bool HandlerSession::mayCall() {
    if (interruption_->hasComeByNow() && !isTidying_)
        whyStopped_ = "interrupted";
    return whyStopped_.empty();
}

Reply HandlerSession::call(Caller caller, const char* method, GVariant* arguments) {
    const OwnedVariant owned(arguments == nullptr ? nullptr : g_variant_ref_sink(arguments));
    if (!mayCall())
        return {Reply::End::stopped, {}, whyStopped_};
    const auto transaction = handlerMethod(method).isInTransaction() ? numberIn(owned.get()) : 0;
    const auto& bus = caller == Caller::self ? self_ : other_;
    auto reply = replyOf(method, bus.call(parameterHandler, method, owned.get()));
    keepAccount(method, reply, transaction, caller);
    return reply;
}

Reply HandlerSession::replyOf(const char* method, Answer answer) {
    using enum Answer::Outcome;
    const bool isStart = std::string_view(method) == "start";
    if (answer.outcome == answered &&
        g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE(handlerMethod(method).returns)) !=
            FALSE)
        return {Reply::End::answered, std::move(answer.values), {}};
    if (answer.outcome == answered)
        answer.error = unexpectedType(method, answer.values);
    if (isStart && (answer.outcome == answered || answer.outcome == timedOut))
        unknown_.push_back(answer.error);
    if (answer.outcome == answered || answer.outcome == refused)
        return {Reply::End::error, {}, std::move(answer.error)};
    if (answer.outcome != timedOut)
        open_.clear(); // with whoever has left
    isAbsent_ = answer.outcome == notRunning;
    whyStopped_ = answer.error;
    return {Reply::End::stopped, {}, std::move(answer.error)};
}

void HandlerSession::keepAccount(std::string_view method, const Reply& reply,
                                 std::uint32_t transaction, Caller caller) {
    const bool isAnswered = reply.end == Reply::End::answered;
    if (method == "start" && isAnswered)
        open_[numberIn(reply.values.get())] = {.caller = caller};
    const auto found = open_.find(transaction);
    if (found == open_.end())
        return;
    if (method == "commit" && isAnswered)
        found->second.isCommitted = true;
    // What was committed and is no longer known was ended by the commit.
    if (method == "end" &&
        (isAnswered || (found->second.isCommitted && reply.end == Reply::End::error)))
        open_.erase(found);
}

void HandlerSession::resume() {
    isTidying_ = true;
    whyStopped_.clear();
}

std::vector<std::string> HandlerSession::endAll() {
    std::vector<std::string> left;
    const auto open = open_;
    for (const auto& [transaction, state] : open) {
        const auto reply = call(state.caller, "end", g_variant_new("(u)", transaction));
        if (open_.contains(transaction))
            left.push_back("transaction " + std::to_string(transaction) +
                           " cannot be ended: " + reply.text);
    }
    for (const auto& text : unknown_)
        left.push_back("start may have opened one without telling its number: " + text);
    return left;
}

} // namespace morvane::ctl
