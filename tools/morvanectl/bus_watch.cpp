#include "bus_watch.h"

#include <glib-unix.h>

#include <unistd.h>

#include <utility>

namespace morvane::ctl {

struct BusWatch::NameWatch {
    BusWatch& watch;
    const Service& service;
    guint id = 0;

    static void onAppeared(GDBusConnection* /*bus*/, const gchar* /*name*/, const gchar* owner,
                           gpointer data) {
        const auto* const self = static_cast<NameWatch*>(data);
        self->watch.events_.push_back(
            {BusEvent::Kind::ownerChanged, &self->service, owner, nullptr});
    }

    static void onVanished(GDBusConnection* /*bus*/, const gchar* /*name*/, gpointer data) {
        const auto* const self = static_cast<NameWatch*>(data);
        self->watch.events_.push_back({BusEvent::Kind::ownerChanged, &self->service, {}, nullptr});
    }
};

BusWatch::BusWatch(const BusClient& bus, std::span<const Service> services, const Service& emitter,
                   const char* signal)
    : bus_(bus.connection()),
      // An answer that is awaited would hold the end up, so the connection ends, too.
      interruption_([this] {
          end(BusEvent::Kind::interrupted);
          g_dbus_connection_close(bus_, nullptr, nullptr, nullptr);
      }) {
    const GDBusSignalCallback onSignal = [](GDBusConnection*, const gchar*, const gchar*,
                                            const gchar*, const gchar*, GVariant* arguments,
                                            gpointer self) {
        static_cast<BusWatch*>(self)->events_.push_back(
            {BusEvent::Kind::signalled, nullptr, {}, OwnedVariant(g_variant_ref(arguments))});
    };
    subscription_ = g_dbus_connection_signal_subscribe(
        bus_, emitter.name, emitter.name, signal, emitter.path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        onSignal, this, nullptr);
    for (const auto& service : services)
        watchName(service);
    watchEnds();
}

BusWatch::~BusWatch() {
    g_source_remove(outputSource_);
    g_signal_handler_disconnect(bus_, closedHandler_);
    for (const auto& name : names_)
        g_bus_unwatch_name(name->id);
    g_dbus_connection_signal_unsubscribe(bus_, subscription_);
}

void BusWatch::watchName(const Service& service) {
    names_.push_back(std::make_unique<NameWatch>(NameWatch{*this, service}));
    auto* const watch = names_.back().get();
    watch->id = g_bus_watch_name_on_connection(bus_, service.name, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                               NameWatch::onAppeared, NameWatch::onVanished, watch,
                                               nullptr);
}

void BusWatch::watchEnds() {
    using ClosedHandler = void (*)(GDBusConnection*, gboolean, GError*, gpointer);
    const ClosedHandler onClosed = [](GDBusConnection*, gboolean, GError*, gpointer self) {
        static_cast<BusWatch*>(self)->end(BusEvent::Kind::busEnded);
    };
    closedHandler_ = g_signal_connect(bus_, "closed", G_CALLBACK(onClosed), this);
    const GUnixFDSourceFunc onOutputClosed = [](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<BusWatch*>(self)->end(BusEvent::Kind::outputClosed);
        return G_SOURCE_CONTINUE;
    };
    constexpr auto closed = static_cast<GIOCondition>(G_IO_ERR | G_IO_HUP | G_IO_NVAL);
    outputSource_ = g_unix_fd_add(STDOUT_FILENO, closed, onOutputClosed, this);
}

// The first reason counts.
void BusWatch::end(BusEvent::Kind kind) {
    end_ = end_.value_or(kind);
}

BusEvent BusWatch::next() {
    while (events_.empty() && !end_)
        g_main_context_iteration(nullptr, TRUE);
    if (end_)
        return {*end_, nullptr, {}, nullptr};
    auto event = std::move(events_.front());
    events_.pop_front();
    return event;
}

} // namespace morvane::ctl
