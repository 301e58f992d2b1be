#include "check_calls.h"

#include "output.h"

#include <algorithm>
#include <utility>

namespace morvane::ctl {

namespace {

constexpr guint32 noOption = 0;

// The values of an answer that has one text or a list of them.
Calls::Texts textsIn(const Reply& reply) {
    const OwnedVariant first(g_variant_get_child_value(reply.values.get(), 0));
    if (g_variant_is_of_type(first.get(), G_VARIANT_TYPE_STRING) != FALSE)
        return {g_variant_get_string(first.get(), nullptr)};
    return stringsOf(first.get());
}

// One text, or the list of all, as the method takes them.
GVariant* argument(const char* method, const Calls::Texts& texts) {
    return handlerMethod(method).isBulk() ? stringArray(texts)
                                          : g_variant_new_string(texts.front().c_str());
}

} // namespace

Calls::~Calls() {
    if (transaction_)
        context_.session.call(caller_, "end", g_variant_new("(u)", *transaction_));
}

GVariant* Calls::argumentsOf(const HandlerMethod& method,
                             std::initializer_list<GVariant*> arguments,
                             std::uint32_t transaction) const {
    GVariantBuilder tuple;
    g_variant_builder_init(&tuple, G_VARIANT_TYPE_TUPLE);
    if (method.isInTransaction())
        g_variant_builder_add(&tuple, "u", transaction);
    if (method.name.ends_with("get_bulk"))
        g_variant_builder_add(&tuple, "u", noOption);
    for (auto* const argument : arguments)
        g_variant_builder_add_value(&tuple, argument);
    return g_variant_builder_end(&tuple);
}

Reply Calls::call(const char* method, std::initializer_list<GVariant*> arguments,
                  std::optional<std::uint32_t> transaction) {
    return context_.session.call(
        caller_, method,
        argumentsOf(handlerMethod(method), arguments,
                    transaction ? *transaction : transaction_.value_or(0)));
}

Reply Calls::callUnlessFailed(const char* method, std::initializer_list<GVariant*> arguments) {
    const auto found = context_.broken.find(method);
    if (succeeded() && found != context_.broken.end())
        giveUp(std::string(method) + " does not work");
    if (succeeded() && !context_.session.whyStopped().empty())
        giveUp(context_.session.whyStopped());
    if (!succeeded()) {
        for (auto* const argument : arguments)
            g_variant_unref(g_variant_ref_sink(argument));
        return {Reply::End::stopped, {}, whyFailed_};
    }
    auto reply = call(method, arguments);
    if (reply.end == Reply::End::stopped && context_.session.isInterrupted())
        giveUp(reply.text);
    else if (reply.end != Reply::End::answered)
        whyFailed_ = std::string(method) + ": " + reply.text;
    return reply;
}

std::uint32_t Calls::start() {
    if (context_.broken.contains("end"))
        giveUp("end does not work, so no transaction is started");
    const auto reply = callUnlessFailed("start", {});
    if (!succeeded())
        return 0;
    guint32 transaction = 0;
    g_variant_get(reply.values.get(), "(u)", &transaction);
    transaction_ = transaction;
    return transaction;
}

void Calls::commit() {
    callUnlessFailed("commit", {});
}

void Calls::end() {
    callUnlessFailed("end", {});
    if (succeeded())
        transaction_.reset();
}

void Calls::set(const char* method, const Texts& keys, const Texts& values) {
    callUnlessFailed(method, {argument(method, keys), argument(method, values)});
}

void Calls::reset(const char* method, const Texts& keys) {
    callUnlessFailed(method, {argument(method, keys)});
}

Calls::Texts Calls::get(const char* method, const Texts& keys) {
    const auto reply = callUnlessFailed(method, {argument(method, keys)});
    if (!succeeded())
        return {};
    auto values = textsIn(reply);
    if (values.size() == keys.size())
        return values;
    whyFailed_ = std::string(method) + ": it answered " + std::to_string(values.size()) +
                 " values for " + std::to_string(keys.size()) + " keys";
    return {};
}

bool Calls::checkSet(const char* method, const std::string& key, const std::string& value) {
    const auto reply = callUnlessFailed(
        method, {g_variant_new_string(key.c_str()), g_variant_new_string(value.c_str())});
    gboolean isAccepted = FALSE;
    if (succeeded())
        g_variant_get(reply.values.get(), "(b)", &isAccepted);
    return isAccepted != FALSE;
}

std::optional<std::string> Calls::trySet(const char* method, const std::string& key,
                                         const std::string& value) {
    const auto reply = callUnlessFailed(
        method, {g_variant_new_string(key.c_str()), g_variant_new_string(value.c_str())});
    if (reply.end != Reply::End::error)
        return std::nullopt;
    whyFailed_.clear();
    return reply.text;
}

Calls::Texts Calls::read(const Texts& keys) {
    const bool isSingle = !context_.broken.contains("single_get");
    Calls stranger(context_, Caller::other);
    Texts values;
    if (!isSingle)
        stranger.start();
    for (const auto& key : keys) {
        const auto one =
            succeeded() ? stranger.get(isSingle ? "single_get" : "get", {key}) : Texts();
        values.insert(values.end(), one.begin(), one.end());
    }
    if (!isSingle)
        stranger.end();
    if (succeeded() && !stranger.succeeded()) {
        whyFailed_ = stranger.whyFailed_;
        isNotChecked_ = stranger.isNotChecked_;
    }
    return values;
}

void Calls::giveUp(std::string why) {
    if (!succeeded())
        return;
    whyFailed_ = std::move(why);
    isNotChecked_ = true;
}

CheckResult Calls::result(bool passes, std::string seen) const {
    if (succeeded())
        return passOrFail(passes, std::move(seen));
    return {isNotChecked_ ? CheckOutcome::notChecked : CheckOutcome::fail, whyFailed_};
}

std::string assignmentsText(const Calls::Texts& keys, const Calls::Texts& values) {
    Calls::Texts texts;
    for (std::size_t i = 0; i < keys.size(); ++i)
        texts.push_back(keys[i] + "=" + (i < values.size() ? values[i] : "?"));
    return shortList(texts);
}

} // namespace morvane::ctl
