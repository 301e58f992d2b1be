#include "bus_client.h"

#include "output.h"

#include <utility>

namespace morvane::ctl {

namespace {

using OwnedIoStream = std::unique_ptr<GIOStream, ReleasedBy<g_object_unref>>;

// The error text as the service sent it, without the prefix that GDBus adds.
std::string textOf(GError* raw) {
    const OwnedError error(raw);
    g_dbus_error_strip_remote_error(raw);
    return raw->message;
}

// That of the session bus; empty with an error.
std::string sessionBusAddress(Wait& wait, GError** error) {
    const OwnedText address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, wait.cancellable(), error));
    return address ? address.get() : "";
}

// Null with an error.
OwnedConnection connect(const std::string& address, Wait& wait, GError** error) {
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_address_get_stream(address.c_str(), wait.cancellable(), Wait::onResult, &wait);
    const OwnedIoStream stream(g_dbus_address_get_stream_finish(wait.result(), nullptr, error));
    if (!stream)
        return nullptr;
    wait.endWithTime(stream.get());
    g_dbus_connection_new(stream.get(), nullptr, flags, nullptr, wait.cancellable(), Wait::onResult,
                          &wait);
    return OwnedConnection(g_dbus_connection_new_finish(wait.result(), error));
}

std::string awaited(const Service& service, const char* method) {
    return std::string(service.name) + " to answer " + method;
}

Answer failure(const Service& service, const char* method, const Wait& wait, GError* raw) {
    using enum Answer::Outcome;
    const std::string name = service.name;
    if (wait.isTimeOver()) {
        g_error_free(raw);
        return {timedOut, {}, name + " did not answer " + method + ' ' + withinText(wait.limit())};
    }
    if (g_error_matches(raw, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE) {
        g_error_free(raw);
        return {notRunning, {}, "the service " + name + " is not running"};
    }
    const OwnedText remote(g_dbus_error_get_remote_error(raw));
    if (remote && g_str_has_prefix(remote.get(), "org.freedesktop.DBus.Error.Spawn.") != FALSE)
        return {notRunning, {}, textOf(raw)};
    const bool isLost =
        !remote || g_error_matches(raw, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) != FALSE;
    return {isLost ? lost : refused, {}, textOf(raw)};
}

} // namespace

std::optional<bool> yesOrNo(const Answer& answer) {
    if (!answer.values || g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(b)")) == FALSE)
        return std::nullopt;
    gboolean yes = FALSE;
    g_variant_get(answer.values.get(), "(b)", &yes);
    return yes != FALSE;
}

BusClient::BusClient(const Settings& settings, std::string& error)
    : messages_(settings.messages),
      limit_(settings.timeLimit) {
    Wait wait("the bus to answer", messages_, limit_);
    GError* raw = nullptr;
    address_ = settings.address.empty() ? sessionBusAddress(wait, &raw) : settings.address;
    if (raw == nullptr)
        bus_ = connect(address_, wait, &raw);
    if (raw == nullptr)
        return;
    const auto text = textOf(raw);
    error = "cannot reach the bus (" +
            (wait.isTimeOver() ? "it did not answer " + withinText(limit_) : text) +
            "); set DBUS_SESSION_BUS_ADDRESS, or name the bus with --address";
}

Answer BusClient::call(const Service& service, const char* method, GVariant* arguments) const {
    return call(service, method, arguments, limit_);
}

Answer BusClient::call(const Service& service, const char* method, GVariant* arguments,
                       const TimeLimit& limit) const {
    Wait wait(awaited(service, method), messages_, limit);
    return call(service, method, arguments, wait);
}

Wait BusClient::waitFor(const Service& service, const char* method) const {
    return {awaited(service, method), messages_, limit_};
}

Answer BusClient::call(const Service& service, const char* method, GVariant* arguments,
                       Wait& wait) const {
    g_dbus_connection_call(bus_.get(), service.name, service.path, service.name, method, arguments,
                           nullptr, G_DBUS_CALL_FLAGS_NONE, G_MAXINT, wait.cancellable(),
                           Wait::onResult, &wait);
    GError* error = nullptr;
    OwnedVariant values(g_dbus_connection_call_finish(bus_.get(), wait.result(), &error));
    if (error != nullptr)
        return failure(service, method, wait, error);
    return {Answer::Outcome::answered, std::move(values), {}};
}

std::optional<bool> BusClient::isRunning(const Service& service) const {
    return isRunning(service, limit_);
}

std::optional<bool> BusClient::isRunning(const Service& service, const TimeLimit& limit) const {
    return yesOrNo(call(busDriver, "NameHasOwner", g_variant_new("(s)", service.name), limit));
}

} // namespace morvane::ctl
