// A client of the preset service in C++ with sd-bus, which is part of systemd's library.
//
//   c++ -std=c++20 -o client client.cpp $(pkg-config --cflags --libs libsystemd)

#include <systemd/sd-bus.h>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr auto service = "org.norvix.preset";

// A load tries each of its six operations ten times, a second apart, before it gives up. After
// D-Bus's usual 25 seconds nobody would be there to hear of it.
constexpr auto timeout = 60s;

struct Closed {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, Closed>;

// An error reply, or a call that was not made.
struct Error : sd_bus_error {
    Error() : sd_bus_error(SD_BUS_ERROR_NULL) {}
    ~Error() { sd_bus_error_free(this); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    // What went wrong, with the negative result of an sd_bus function; empty if it is not negative.
    std::string text(int result) const {
        if (result >= 0)
            return {};
        return message ? message : std::strerror(-result);
    }
};

bool isOnBus(sd_bus* bus) {
    return sd_bus_get_name_creds(bus, service, 0, nullptr) >= 0;
}

// Waits until the service is on the bus, and has the bus start it if the bus knows how. Returns
// what went wrong, or an empty text.
std::string waitForService(sd_bus* bus, std::chrono::seconds atMost) {
    const auto end = Clock::now() + atMost;
    // Each signal that this lets through ends a pause, and the name is looked at again.
    int result = sd_bus_add_match(bus, nullptr,
                                  "type='signal',sender='org.freedesktop.DBus',"
                                  "member='NameOwnerChanged',arg0='org.norvix.preset'",
                                  nullptr, nullptr);
    if (result >= 0) // and the answer, which may be that it cannot be started, does not matter
        result = sd_bus_call_method_async(
            bus, nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "StartServiceByName", nullptr, nullptr, "su", service, 0U);
    while (result >= 0 && !isOnBus(bus)) {
        result = sd_bus_process(bus, nullptr);
        const auto left = std::chrono::duration_cast<microseconds>(end - Clock::now());
        if (left <= 0s)
            return std::string(service) + " is not on the bus";
        if (result == 0)
            result = sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()));
    }
    return Error().text(result);
}

// Stores a preset in a file, or loads it. A request that fails is answered with an error, so there
// is no need to look at the answer. Returns what went wrong, or an empty text.
std::string request(sd_bus* bus, const char* method, const char* preset, const char* file) {
    sd_bus_set_method_call_timeout(bus, microseconds(timeout).count());
    std::error_code noFolder;
    const auto path = std::filesystem::absolute(file, noFolder); // the daemon's own folder is "/"
    if (noFolder)
        return noFolder.message();
    Error error;
    return error.text(sd_bus_call_method(bus, service, "/preset", service, method, &error, nullptr,
                                         "ss", preset, path.c_str()));
}

std::string run(char** arguments) {
    sd_bus* opened = nullptr;
    const int result = sd_bus_open_user(&opened);
    const Bus bus(opened);
    if (result < 0)
        return "no bus: " + Error().text(result);
    if (std::string_view(arguments[0]) != "wait")
        return request(bus.get(), arguments[0], arguments[1], arguments[2]);
    int seconds = 0;
    std::from_chars(arguments[1], arguments[1] + std::strlen(arguments[1]), seconds);
    return waitForService(bus.get(), std::chrono::seconds(seconds));
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view method = argc > 1 ? argv[1] : "";
    if (!(argc == 3 && method == "wait") &&
        !(argc == 4 && (method == "store" || method == "load"))) {
        std::fputs("Usage: client wait SECONDS | store PRESET FILE | load PRESET FILE\n", stderr);
        return 2;
    }
    const std::string wrong = run(argv + 1);
    if (wrong.empty())
        return 0;
    std::fprintf(stderr, "client: %s\n", wrong.c_str());
    return 1;
}
