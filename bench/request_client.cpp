// request_client: calls the daemon and the floor in turns, and measures each call: the time that
// the client waits, and the time that the serving process computes.
//
// Usage: request_client ROUNDS METHOD PRESET FILE
//
// METHOD is store, load, load_with_default or is_preset. Each service has a file of its own, FILE
// with the service's name behind it. Prints a line for each round: waiting and computing time of
// the daemon, the same of the floor, in nanoseconds.

#include "bus.h"

#include <chrono>
#include <fstream>

namespace {

using namespace morvane::bench;
using Clock = std::chrono::steady_clock;

struct Sample {
    std::int64_t waiting;
    std::uint64_t computing;
};

class Service {
public:
    Service(DBusConnection* bus, const char* name) : bus_(bus), name_(name) {
        const Message message(dbus_message_new_method_call(
            DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetConnectionUnixProcessID"));
        dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &name_, DBUS_TYPE_INVALID);
        dbus_uint32_t process = 0;
        dbus_message_get_args(call(bus_, message).get(), nullptr, DBUS_TYPE_UINT32, &process,
                              DBUS_TYPE_INVALID);
        schedule_ = "/proc/" + std::to_string(process) + "/schedstat";
    }

    Sample measure(const char* method, const char* preset, const std::string& file) const {
        const auto path = file + name_;
        const char* const path_text = path.c_str();
        const Message request(
            dbus_message_new_method_call(name_, "/preset", "org.norvix.preset", method));
        dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &preset, DBUS_TYPE_INVALID);
        if (std::string_view(method) != "is_preset")
            dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &path_text,
                                     DBUS_TYPE_INVALID);
        const auto computed = computing_time();
        const auto start = Clock::now();
        call(bus_, request);
        const auto waited = Clock::now() - start;
        settle();
        return {std::chrono::nanoseconds(waited).count(), computing_time() - computed};
    }

private:
    // Lets the end of a transaction, which comes after the answer, count for this call.
    void settle() const {
        const char* const none = "none";
        const Message request(
            dbus_message_new_method_call(name_, "/preset", "org.norvix.preset", "is_preset"));
        dbus_message_append_args(request.get(), DBUS_TYPE_STRING, &none, DBUS_TYPE_INVALID);
        for (int i = 0; i < 2; ++i)
            call(bus_, request);
    }

    std::uint64_t computing_time() const {
        std::uint64_t nanoseconds = 0;
        std::ifstream(schedule_) >> nanoseconds;
        return nanoseconds;
    }

    DBusConnection* bus_;
    const char* name_;
    std::string schedule_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 5)
        give_up("usage: request_client ROUNDS METHOD PRESET FILE");
    DBusConnection* const bus = connect();
    const Service daemon(bus, "org.norvix.preset");
    const Service floor(bus, "org.norvix.floor");
    for (auto round = std::strtol(argv[1], nullptr, 10); round > 0; --round) {
        const auto a = daemon.measure(argv[2], argv[3], argv[4]);
        const auto b = floor.measure(argv[2], argv[3], argv[4]);
        std::printf("%lld %llu %lld %llu\n", static_cast<long long>(a.waiting),
                    static_cast<unsigned long long>(a.computing), static_cast<long long>(b.waiting),
                    static_cast<unsigned long long>(b.computing));
    }
}
