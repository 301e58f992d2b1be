// The simulated Parameter Handler as an object on the bus, over GDBus.
#pragma once

#include "fault_script.h"
#include "glib/glib_owned.h"
#include "transaction_calls.h"
#include "value_store.h"

#include <gio/gio.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace morvane::sim {

/// What the service needs of the process around it. All are called from the main loop.
struct ServiceHooks {
    /// Gives the bus name up; takes it back after that many milliseconds, or never.
    std::function<void(std::optional<std::uint32_t> milliseconds)> dropName;

    /// Ends the process without a further answer.
    std::function<void()> exit;

    /// Logs a call or an answer: one line, without a line feed.
    std::function<void(const std::string& line)> log;
};

/// Serves the object "/transaction". Must stay where it is while the main loop runs.
class TransactionService {
public:
    /// @param bus    borrowed for the service's life, as are `values` and `faults`.
    /// @param error  set, the caller's to free, if the object cannot be exported.
    TransactionService(GDBusConnection* bus, ValueStore& values, FaultScript& faults,
                       ServiceHooks hooks, GError** error);
    ~TransactionService();
    TransactionService(const TransactionService&) = delete;
    TransactionService& operator=(const TransactionService&) = delete;

    using Invocation = std::unique_ptr<GDBusMethodInvocation, ReleasedBy<g_object_unref>>;

private:
    struct DelayedAnswer;

    static void onMethodCall(GDBusConnection* bus, const gchar* sender, const gchar* path,
                             const gchar* interface, const gchar* method, GVariant* parameters,
                             GDBusMethodInvocation* invocation, gpointer self);

    void serve(Invocation invocation);
    void serveWithFault(const Fault& fault, Invocation invocation);
    void performAndAnswer(Invocation invocation);
    Outcome performCall(const Invocation& invocation);
    void answer(Invocation invocation, const Outcome& outcome) const;
    void answerError(Invocation invocation, const std::string& message) const;
    void answerLater(Invocation invocation, Outcome outcome, std::uint32_t milliseconds);
    void answerWrongType(const Invocation& invocation);
    void emitChanged(const std::vector<std::string>& keys);

    GDBusConnection* bus_;
    ValueStore& values_;
    FaultScript& faults_;
    ServiceHooks hooks_;
    guint registration_ = 0;
    std::vector<Invocation> unanswered_; ///< of calls that never get an answer
};

} // namespace morvane::sim
