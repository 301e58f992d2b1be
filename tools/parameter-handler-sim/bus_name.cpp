#include "bus_name.h"

#include <utility>

namespace morvane::sim {

BusName::BusName(GDBusConnection* bus, const char* name, std::function<void()> acquired,
                 std::function<void()> refused)
    : bus_(bus),
      name_(name),
      acquired_(std::move(acquired)),
      refused_(std::move(refused)) {
    own();
}

BusName::~BusName() {
    if (timeout_ != 0)
        g_source_remove(timeout_);
    release();
}

void BusName::drop(std::optional<std::uint32_t> milliseconds) {
    release();
    if (!milliseconds || timeout_ != 0)
        return;
    const GSourceFunc takeAgain = [](gpointer data) -> gboolean {
        auto* const self = static_cast<BusName*>(data);
        self->timeout_ = 0;
        self->own();
        return G_SOURCE_REMOVE;
    };
    timeout_ = g_timeout_add(*milliseconds, takeAgain, this);
}

void BusName::own() {
    const GBusNameAcquiredCallback onAcquired = [](GDBusConnection*, const gchar*, gpointer data) {
        static_cast<BusName*>(data)->acquired_();
    };
    const GBusNameLostCallback onLost = [](GDBusConnection* bus, const gchar*, gpointer data) {
        if (bus != nullptr) // else the bus ended
            static_cast<BusName*>(data)->refused_();
    };
    owner_ = g_bus_own_name_on_connection(bus_, name_, G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE,
                                          onAcquired, onLost, this, nullptr);
}

void BusName::release() {
    if (owner_ != 0)
        g_bus_unown_name(std::exchange(owner_, 0));
}

} // namespace morvane::sim
