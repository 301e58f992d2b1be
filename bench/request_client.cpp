// request_client: calls services in turns and measures each call.
//
// Usage: request_client ROUNDS store|load|load_with_default|load_default PRESET FILE
//        request_client ROUNDS is_preset|in_preset PRESET KEY
//
// The first form calls the daemon and the baseline. Each has a file of its own, FILE with the
// service's name behind it. Prints a line for each round: the time that the client waits for the
// daemon and that the daemon computes, and the same of the baseline, in nanoseconds.
//
// The second form prints the times that the client waits for the daemon's process to answer a ping,
// which libdbus does by itself, then for the daemon, for the empty service, and for the daemon
// again. So a call of the daemon is behind one of the same process when it is compared with a ping,
// which is so too, and behind one of another process when it is compared with the empty service.
// KEY is asked for by in_preset.

#include "bus.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace {

using namespace morvane::bench;
using Clock = std::chrono::steady_clock;

constexpr const char* daemon_name = "org.norvix.preset";
constexpr std::chrono::milliseconds nap{1};
constexpr std::chrono::seconds patience{60};

Message preset_call(const char* service, const char* method, const char* preset) {
    Message message(dbus_message_new_method_call(service, "/preset", "org.norvix.preset", method));
    append(message.get(), preset);
    return message;
}

/// Waits for the reply, which must be TRUE, or be empty.
std::int64_t waiting_time(DBusConnection* bus, const Message& request) {
    const auto start = Clock::now();
    const auto reply = call(bus, request);
    const auto waited = Clock::now() - start;
    dbus_bool_t success = TRUE;
    dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_BOOLEAN, &success, DBUS_TYPE_INVALID);
    if (success == FALSE)
        giveUp("a service answered FALSE");
    return std::chrono::nanoseconds(waited).count();
}

struct Sample {
    std::int64_t waiting;
    std::uint64_t computing;
};

/// A service that stores and loads.
class Service {
public:
    Service(DBusConnection* bus, const char* name) : bus_(bus), name_(name) {
        const Message message(dbus_message_new_method_call(
            DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetConnectionUnixProcessID"));
        append(message.get(), name_);
        process_ = "/proc/" + std::to_string(readNumber(call(bus_, message)));
    }

    Sample measure(const std::string& method, const char* preset, const std::string& file) const {
        const auto request = preset_call(name_, method.c_str(), preset);
        if (method != "load_default")
            append(request.get(), (file + name_).c_str());
        const auto computed = computing_time();
        const auto waited = waiting_time(bus_, request);
        settle();
        return {waited, computing_time() - computed};
    }

private:
    // What comes after the answer counts for this call: the end of the transaction, and whatever
    // the process does until it sleeps. Nothing is asked of the process, for that would count too.
    void settle() const {
        const Message open(dbus_message_new_method_call("org.norvix.transaction", "/transaction",
                                                        "org.norvix.transaction",
                                                        "open_transactions"));
        const auto end = Clock::now() + patience;
        bool at_rest = false;
        while (!at_rest) {
            const Message question(dbus_message_copy(open.get()));
            at_rest = readNumber(call(bus_, question)) == 0;
            std::this_thread::sleep_for(nap); // in which the handler's last answer arrives
            at_rest = at_rest && asleep();
            if (Clock::now() > end)
                giveUp("a service does not come to rest");
        }
    }

    bool asleep() const {
        std::ifstream file(process_ + "/stat");
        const std::string text(std::istreambuf_iterator<char>(file), {});
        const auto name_end = text.rfind(") ");
        if (name_end == std::string::npos)
            giveUp("cannot read the state of a process");
        return text[name_end + 2] == 'S';
    }

    std::uint64_t computing_time() const {
        std::uint64_t nanoseconds = 0;
        if (!(std::ifstream(process_ + "/schedstat") >> nanoseconds))
            giveUp("cannot read the computing time of a process");
        return nanoseconds;
    }

    DBusConnection* bus_;
    const char* name_;
    std::string process_;
};

void measure_requests(DBusConnection* bus, long rounds, char** arguments) {
    const Service daemon(bus, daemon_name);
    const Service baseline(bus, "org.norvix.baseline");
    for (; rounds > 0; --rounds) {
        const auto a = daemon.measure(arguments[0], arguments[1], arguments[2]);
        const auto b = baseline.measure(arguments[0], arguments[1], arguments[2]);
        std::printf("%lld %llu %lld %llu\n", static_cast<long long>(a.waiting),
                    static_cast<unsigned long long>(a.computing), static_cast<long long>(b.waiting),
                    static_cast<unsigned long long>(b.computing));
    }
}

void measure_round_trips(DBusConnection* bus, long rounds, char** arguments) {
    const std::string_view method = arguments[0];
    const auto question = [&](const char* service) {
        auto message = preset_call(service, arguments[0], arguments[1]);
        if (method == "in_preset")
            append(message.get(), std::span<const char* const>(arguments + 2, 1));
        return message;
    };
    for (; rounds > 0; --rounds) {
        const Message ping(
            dbus_message_new_method_call(daemon_name, "/", DBUS_INTERFACE_PEER, "Ping"));
        const auto pinged = waiting_time(bus, ping);
        const auto behind_ping = waiting_time(bus, question(daemon_name));
        const auto empty = waiting_time(bus, question("org.norvix.empty"));
        const auto behind_empty = waiting_time(bus, question(daemon_name));
        std::printf("%lld %lld %lld %lld\n", static_cast<long long>(pinged),
                    static_cast<long long>(behind_ping), static_cast<long long>(empty),
                    static_cast<long long>(behind_empty));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5)
        giveUp("usage: request_client ROUNDS METHOD PRESET FILE|KEY");
    DBusConnection* const bus = connect();
    const auto rounds = std::strtol(argv[1], nullptr, 10);
    if (std::string_view(argv[2]).ends_with("_preset"))
        measure_round_trips(bus, rounds, argv + 2);
    else
        measure_requests(bus, rounds, argv + 2);
}
