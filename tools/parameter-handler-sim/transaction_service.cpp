#include "transaction_service.h"

#include "text/request_texts.h"
#include "transaction_interface.h"

#include <utility>

namespace morvane::sim {

namespace {

constexpr const char* objectPath = "/transaction";
constexpr const char* interfaceName = "org.norvix.transaction";
constexpr const char* errorName = "org.norvix.transaction.Error";

// The mark by which clients tell a refusal from a transport error.
constexpr const char* refusalMark = "dbus_norvix_transaction: ";

using NodeInfo = std::unique_ptr<GDBusNodeInfo, ReleasedBy<g_dbus_node_info_unref>>;

std::string textOf(GVariant* value) {
    const OwnedText text(g_variant_print(value, TRUE));
    return text.get();
}

std::string methodOf(const TransactionService::Invocation& invocation) {
    return g_dbus_method_invocation_get_method_name(invocation.get());
}

// Whether D-Bus carries these strings in one list. GDBus silently fails to send a longer one, so
// that the client would wait in vain.
bool fitsOneList(const std::vector<std::string>& texts) {
    ArraySize size;
    for (const auto& text : texts)
        size.add(text);
    return size.fits();
}

void changeCount(const Fault& fault, Outcome& outcome) {
    auto* const values = std::get_if<std::vector<std::string>>(&outcome.result);
    if (values == nullptr)
        return;
    if (fault.action == Fault::Action::moreValues)
        values->emplace_back("surplus");
    else if (!values->empty())
        values->pop_back();
}

} // namespace

/// An answer to be sent later.
struct TransactionService::DelayedAnswer {
    TransactionService* service;
    Invocation invocation;
    Outcome outcome;
};

TransactionService::TransactionService(GDBusConnection* bus, ValueStore& values,
                                       FaultScript& faults, ServiceHooks hooks, GError** error)
    : bus_(bus),
      values_(values),
      faults_(faults),
      hooks_(std::move(hooks)) {
    static constexpr GDBusInterfaceVTable table{
        .method_call = onMethodCall,
        .get_property = nullptr,
        .set_property = nullptr,
        .padding = {},
    };
    const NodeInfo node(g_dbus_node_info_new_for_xml(transactionInterface, error));
    if (node)
        registration_ = g_dbus_connection_register_object(bus_, objectPath, node->interfaces[0],
                                                          &table, this, nullptr, error);
}

TransactionService::~TransactionService() {
    if (registration_ != 0)
        g_dbus_connection_unregister_object(bus_, registration_);
}

void TransactionService::onMethodCall(GDBusConnection* /*bus*/, const gchar* /*sender*/,
                                      const gchar* /*path*/, const gchar* /*interface*/,
                                      const gchar* /*method*/, GVariant* /*parameters*/,
                                      GDBusMethodInvocation* invocation, gpointer self) {
    static_cast<TransactionService*>(self)->serve(Invocation(invocation));
}

void TransactionService::serve(Invocation invocation) {
    const auto method = methodOf(invocation);
    hooks_.log("call " + method + " " +
               textOf(g_dbus_method_invocation_get_parameters(invocation.get())));
    if (const auto* const fault = faults_.next(method)) {
        serveWithFault(*fault, std::move(invocation));
        return;
    }
    performAndAnswer(std::move(invocation));
}

void TransactionService::performAndAnswer(Invocation invocation) {
    const auto outcome = performCall(invocation);
    answer(std::move(invocation), outcome);
}

void TransactionService::serveWithFault(const Fault& fault, Invocation invocation) {
    switch (fault.action) {
    case Fault::Action::error:
        answerError(std::move(invocation), fault.text);
        break;
    case Fault::Action::exit:
        hooks_.exit();
        unanswered_.push_back(std::move(invocation));
        break;
    case Fault::Action::noReply:
        performCall(invocation);
        unanswered_.push_back(std::move(invocation));
        break;
    case Fault::Action::dropName:
        hooks_.dropName(fault.milliseconds);
        performAndAnswer(std::move(invocation));
        break;
    case Fault::Action::delay: {
        auto outcome = performCall(invocation);
        answerLater(std::move(invocation), std::move(outcome), *fault.milliseconds);
        break;
    }
    case Fault::Action::fewerValues:
    case Fault::Action::moreValues: {
        auto outcome = performCall(invocation);
        changeCount(fault, outcome);
        answer(std::move(invocation), outcome);
        break;
    }
    case Fault::Action::wrongType:
        performCall(invocation);
        answerWrongType(invocation);
        break;
    }
}

Outcome TransactionService::performCall(const Invocation& invocation) {
    auto outcome = perform(values_, methodOf(invocation),
                           g_dbus_method_invocation_get_parameters(invocation.get()));
    if (outcome.changed)
        emitChanged(*outcome.changed);
    return outcome;
}

void TransactionService::answer(Invocation invocation, const Outcome& outcome) const {
    if (outcome.refusal) {
        answerError(std::move(invocation), refusalMark + *outcome.refusal);
        return;
    }
    const auto* const values = std::get_if<std::vector<std::string>>(&outcome.result);
    if (values != nullptr && !fitsOneList(*values)) {
        answerError(std::move(invocation),
                    refusalMark + std::string("more than the bus carries in one list"));
        return;
    }
    GVariant* const body = replyBody(outcome);
    hooks_.log("answer " + methodOf(invocation) + " " + textOf(body));
    g_dbus_method_invocation_return_value(invocation.release(), body);
}

void TransactionService::answerError(Invocation invocation, const std::string& message) const {
    hooks_.log("error " + methodOf(invocation) + " " + message);
    g_dbus_method_invocation_return_dbus_error(invocation.release(), errorName, message.c_str());
}

void TransactionService::answerLater(Invocation invocation, Outcome outcome,
                                     std::uint32_t milliseconds) {
    const GSourceFunc answerNow = [](gpointer data) -> gboolean {
        auto* const delayed = static_cast<DelayedAnswer*>(data);
        delayed->service->answer(std::move(delayed->invocation), delayed->outcome);
        return G_SOURCE_REMOVE;
    };
    const GDestroyNotify destroy = [](gpointer data) { delete static_cast<DelayedAnswer*>(data); };
    g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, answerNow,
                       new DelayedAnswer{this, std::move(invocation), std::move(outcome)}, destroy);
}

// GDBus would reject a reply whose type is not that of the interface, so it is built by hand.
void TransactionService::answerWrongType(const Invocation& invocation) {
    constexpr double neverAnAnswer = 0.5;
    const std::unique_ptr<GDBusMessage, ReleasedBy<g_object_unref>> reply(
        g_dbus_message_new_method_reply(g_dbus_method_invocation_get_message(invocation.get())));
    g_dbus_message_set_body(reply.get(), g_variant_new("(d)", neverAnAnswer));
    hooks_.log("answer " + methodOf(invocation) + " (0.5,)");
    g_dbus_connection_send_message(bus_, reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
}

void TransactionService::emitChanged(const std::vector<std::string>& keys) {
    const Outcome signal{.refusal = {}, .result = keys, .changed = {}};
    g_dbus_connection_emit_signal(bus_, nullptr, objectPath, interfaceName, "transaction",
                                  replyBody(signal), nullptr);
}

} // namespace morvane::sim
