// parameter-handler-sim: stands in for the Parameter Handler, the service that owns the live
// parameter values of a device, where there is no device.

#include "bus_name.h"
#include "device.h"
#include "engine/preset_file.h"
#include "fault_script.h"
#include "glib/glib_owned.h"
#include "options.h"
#include "paramdef/param_def_file.h"
#include "text/line_reader.h"
#include "text/utf8.h"
#include "transaction_service.h"
#include "value_store.h"

#include <gio/gio.h>
#include <glib-unix.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>

namespace morvane::sim {
namespace {

constexpr const char* serviceName = "org.norvix.transaction";
constexpr int failed = 1;

using OwnedBus = std::unique_ptr<GDBusConnection, ReleasedBy<g_object_unref>>;
using OwnedLoop = std::unique_ptr<GMainLoop, ReleasedBy<g_main_loop_unref>>;

int fail(const std::string& message) {
    std::cerr << "parameter-handler-sim: " << message << '\n';
    return failed;
}

// For the reason that the last call of the system gave.
Refusal cannotRead(const std::string& path) {
    return "cannot read " + path + ": " + std::strerror(errno);
}

// Sets the values of the lines `key=value` of a file, which has the format of preset data files.
Refusal readValues(const std::string& path, const Device& device, ValueStore& values) {
    const OwnedStream stream(std::fopen(path.c_str(), "r"));
    if (!stream)
        return cannotRead(path);
    Refusal refusal;
    readPresetFile(stream.get(), [&](const PresetEntry& entry) {
        if (refusal)
            return;
        const auto key = presetKey(entry);
        if (!isUtf8(entry.value)) { // which the bus does not carry
            refusal = path + ": the value of " + key + " is not UTF-8";
            return;
        }
        const auto* const parameter = device.find(key);
        const auto target =
            parameter != nullptr && parameter->isReadOnly() ? Target::status : Target::value;
        const std::array assignment{Assignment{key, std::string(entry.value)}};
        if (const auto reason = values.set({}, target, assignment))
            refusal = path + ": " + *reason;
    });
    return std::ferror(stream.get()) != 0 ? cannotRead(path) : refusal;
}

Refusal readFaults(const std::string& path, FaultScript& faults) {
    std::ifstream script(path);
    if (!script)
        return cannotRead(path);
    if (auto problem = faults.read(script, isMethod))
        return path + ": " + *problem;
    return script.bad() ? cannotRead(path) : Refusal();
}

OwnedBus connectBus(const std::string& address, GError** error) {
    if (address.empty())
        return OwnedBus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error));
    return OwnedBus(g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, error));
}

gboolean quit(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

// Calls `ended` from the main loop when the bus has ended. It is borrowed for the connection's
// life.
void watchBus(GDBusConnection* bus, const std::function<void()>& ended) {
    using ClosedHandler = void (*)(GDBusConnection*, gboolean, GError*, gpointer);
    const ClosedHandler onClosed = [](GDBusConnection*, gboolean, GError*, gpointer function) {
        (*static_cast<const std::function<void()>*>(function))();
    };
    g_signal_connect(bus, "closed", G_CALLBACK(onClosed),
                     const_cast<std::function<void()>*>(&ended));
}

void log(const std::string& line) {
    std::cerr << line << '\n';
}

void printReady(const Options& options, GDBusConnection* bus) {
    if (options.printReady)
        std::cout << "ready " << g_dbus_connection_get_unique_name(bus) << std::endl;
}

int serve(const Options& options, ValueStore& values, FaultScript& faults) {
    GError* raw = nullptr;
    const auto bus = connectBus(options.address, &raw);
    if (const OwnedError error{raw})
        return fail(error->message);
    const OwnedLoop loop(g_main_loop_new(nullptr, FALSE));
    int status = EXIT_SUCCESS;
    const auto end = [&loop] { g_main_loop_quit(loop.get()); };
    const auto failAndEnd = [&](const std::string& problem) {
        status = fail(problem);
        end();
    };
    g_unix_signal_add(SIGTERM, quit, loop.get());
    g_unix_signal_add(SIGINT, quit, loop.get());

    std::optional<BusName> name;
    const TransactionService service(
        bus.get(), values, faults,
        {.dropName = [&name](auto milliseconds) { name->drop(milliseconds); },
         .exit = end,
         .log = options.verbose ? log : [](const std::string&) {}},
        &raw);
    if (const OwnedError error{raw})
        return fail(error->message);
    name.emplace(
        bus.get(), serviceName, [&] { printReady(options, bus.get()); },
        [&] { failAndEnd(std::string("another process owns ") + serviceName); });
    const std::function<void()> busEnded = [&] { failAndEnd("the bus ended"); };
    watchBus(bus.get(), busEnded);
    g_main_loop_run(loop.get());
    return status;
}

int run(int argc, char** argv) {
    Options options;
    if (const auto status = parseOptions(argc, argv, options))
        return *status;
    SystemParameterTable parameters;
    if (readParamDefFile(options.paramDefFile.c_str(), &parameters) != ParamDefResult::ok)
        return fail("cannot use " + options.paramDefFile);
    const Device device(parameters, options.systemArguments);
    ValueStore values(device);
    FaultScript faults;
    Refusal problem;
    if (!options.valuesFile.empty())
        problem = readValues(options.valuesFile, device, values);
    if (!problem && !options.faultsFile.empty())
        problem = readFaults(options.faultsFile, faults);
    return problem ? fail(*problem) : serve(options, values, faults);
}

} // namespace
} // namespace morvane::sim

int main(int argc, char** argv) {
    return morvane::sim::run(argc, argv);
}
