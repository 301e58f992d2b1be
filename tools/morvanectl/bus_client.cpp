#include "bus_client.h"

#include "output.h"

namespace morvane::ctl {

namespace {

using OwnedLoop = std::unique_ptr<GMainLoop, ReleasedBy<g_main_loop_unref>>;

/// A call that is not answered yet.
struct Pending {
    const Service& service;
    const char* method;
    const Messages& messages;
    OwnedLoop loop{g_main_loop_new(nullptr, FALSE)};
    Answer answer{};
};

// The error text as the service sent it, without the prefix that GDBus adds.
std::string textOf(GError* raw) {
    const OwnedError error(raw);
    if (g_error_matches(raw, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE)
        return {};
    g_dbus_error_strip_remote_error(raw);
    return raw->message;
}

void onAnswer(GObject* bus, GAsyncResult* result, gpointer data) {
    auto* const pending = static_cast<Pending*>(data);
    GError* error = nullptr;
    pending->answer.values.reset(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error));
    if (error != nullptr) {
        pending->answer.error = textOf(error);
        if (pending->answer.error.empty())
            pending->answer.error =
                std::string("the service ") + pending->service.name + " is not running";
    }
    g_main_loop_quit(pending->loop.get());
}

gboolean noteWaiting(gpointer data) {
    const auto* const pending = static_cast<Pending*>(data);
    pending->messages.note(std::string("waiting for ") + pending->service.name + " to answer " +
                           pending->method);
    return G_SOURCE_REMOVE;
}

} // namespace

BusClient::BusClient(const std::string& address, const Messages& messages, std::string& error)
    : messages_(messages) {
    GError* raw = nullptr;
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    bus_.reset(address.empty() ? g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &raw)
                               : g_dbus_connection_new_for_address_sync(address.c_str(), flags,
                                                                        nullptr, nullptr, &raw));
    if (raw != nullptr)
        error = "cannot reach the bus (" + textOf(raw) +
                "); set DBUS_SESSION_BUS_ADDRESS, or name the bus with --address";
    else
        g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
}

Answer BusClient::call(const Service& service, const char* method, GVariant* arguments) const {
    constexpr guint noticeDelayMilliseconds = 1000;
    Pending pending{service, method, messages_};
    g_dbus_connection_call(bus_.get(), service.name, service.path, service.name, method, arguments,
                           nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, onAnswer, &pending);
    const auto timer = g_timeout_add(noticeDelayMilliseconds, noteWaiting, &pending);
    g_main_loop_run(pending.loop.get());
    if (auto* const source = g_main_context_find_source_by_id(nullptr, timer))
        g_source_destroy(source);
    return std::move(pending.answer);
}

std::optional<bool> BusClient::isRunning(const Service& service) const {
    static constexpr Service driver{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
    const auto answer = call(driver, "NameHasOwner", g_variant_new("(s)", service.name));
    if (!answer.values)
        return std::nullopt;
    gboolean owned = FALSE;
    g_variant_get(answer.values.get(), "(b)", &owned);
    return owned != FALSE;
}

} // namespace morvane::ctl
