// What happens on the bus while a command watches it, one event after the other. Beside BusClient,
// only this uses GDBus.
#pragma once

#include "bus_client.h"
#include "glib/variant.h"
#include "interruption.h"

#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace morvane::ctl {

struct BusEvent {
    enum class Kind {
        ownerChanged, ///< also once at the beginning, for each service
        signalled,
        // These are the last:
        interrupted,
        outputClosed,
        busEnded,
    };

    Kind kind = Kind::interrupted;
    const Service* service = nullptr; ///< whose owner changed
    std::string owner;                ///< its connection; empty if there is none
    OwnedVariant arguments;           ///< of a signal: a tuple of any type
};

/// Collects events whenever the main loop runs, which calls of the same connection do, too.
class BusWatch {
public:
    /// @param bus      borrowed for the life of the object.
    /// @param services whose owners are watched; borrowed likewise.
    /// @param emitter  its signals of the name `signal` are watched.
    BusWatch(const BusClient& bus, std::span<const Service> services, const Service& emitter,
             const char* signal);
    ~BusWatch();
    BusWatch(const BusWatch&) = delete;
    BusWatch& operator=(const BusWatch&) = delete;

    /// Waits for the next event. The last one comes before all others, and again and again.
    BusEvent next();

    /// Whether a last event has come. An interruption ends the call that waits for an answer.
    bool hasEnded() const { return end_.has_value(); }

private:
    struct NameWatch;

    void watchName(const Service& service);
    void watchEnds();
    void end(BusEvent::Kind kind);

    GDBusConnection* bus_;
    std::deque<BusEvent> events_;
    std::optional<BusEvent::Kind> end_;
    std::vector<std::unique_ptr<NameWatch>> names_;
    guint subscription_ = 0;
    gulong closedHandler_ = 0;
    guint outputSource_ = 0; ///< of the main loop
    Interruption interruption_;
};

} // namespace morvane::ctl
