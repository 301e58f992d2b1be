// The calls that a check of a Parameter Handler makes: over two connections, so that one sees what
// the other has not committed, each with a time limit, and none after one that was not answered.
#pragma once

#include "bus_client.h"
#include "interruption.h"
#include "settings.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// Who makes a call.
enum class Caller {
    self,
    other ///< a connection of its own, for which the first is a stranger
};

/// How a call ended. Text is given for all but the first.
struct Reply {
    enum class End {
        answered, ///< with values of the type that the method returns
        error,    ///< with an error, or with values of another type
        stopped,  ///< it was not answered, or not made: the session is stopped
    };

    End end = End::answered;
    OwnedVariant values;
    std::string text;
};

/// Two connections, and the transactions that are open on them.
class HandlerSession {
public:
    /// Connects twice. On failure the object is of no use and `error` says why. A call takes at
    /// most the time limit of the settings or, without one, as long as the daemon waits.
    HandlerSession(const Settings& settings, std::string& error);
    ~HandlerSession();
    HandlerSession(const HandlerSession&) = delete;
    HandlerSession& operator=(const HandlerSession&) = delete;

    /// @param method    one of the interface's methods.
    /// @param arguments a floating tuple, which is consumed; null for none.
    Reply call(Caller caller, const char* method, GVariant* arguments);

    /// Forgets the signals "transaction" that have come.
    void forgetSignals() { signalled_.clear(); }

    /// The keys that the last signal since then has named. Waits a second for one with these keys.
    /// @return nothing if no signal has come.
    std::optional<std::vector<std::string>> signalledKeys(const std::vector<std::string>& expected);

    /// Why no call is made any more; empty while calls are made. A Parameter Handler that has left
    /// a call without an answer may still carry it out, so that what it does then shows nothing.
    const std::string& whyStopped() const { return whyStopped_; }

    /// Whether a signal has asked for the end, which stops the session.
    bool isInterrupted() const { return interruption_ && interruption_->hasCome(); }

    /// Whether nobody has the name of the Parameter Handler.
    bool isAbsent() const { return isAbsent_; }

    /// Makes calls again, for tidying up: whoever has stopped may have come back.
    void resume();

    /// Ends the transactions that are still open.
    /// @return for each that may be open afterwards, what became of it.
    std::vector<std::string> endAll();

private:
    using Keys = std::vector<std::string>;

    static void onSignal(GDBusConnection* bus, const gchar* sender, const gchar* path,
                         const gchar* interface, const gchar* signal, GVariant* arguments,
                         gpointer session);

    bool mayCall();
    Reply replyOf(const char* method, Answer answer);
    void keepAccount(std::string_view method, const Reply& reply, std::uint32_t transaction,
                     Caller caller);

    struct Open {
        Caller caller = Caller::self;
        bool isCommitted = false;
    };

    BusClient self_;
    BusClient other_;
    std::optional<Interruption> interruption_; ///< once there is something to tidy up
    guint subscription_ = 0;
    std::vector<Keys> signalled_;
    std::map<std::uint32_t, Open> open_;
    std::vector<std::string>
        unknown_; ///< starts whose transactions, if there are any, have no number
    std::string whyStopped_;
    bool isAbsent_ = false;
    bool isTidying_ = false;
};

} // namespace morvane::ctl
