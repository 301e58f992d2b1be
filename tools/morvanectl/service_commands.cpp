// The subcommands that call the running services.

#include "bus_client.h"
#include "commands.h"
#include "output.h"
#include "text/utf8.h"

#include <filesystem>
#include <iostream>
#include <string_view>

namespace morvane::ctl {

namespace {

// The daemon has a different working directory.
std::string absolutePath(const std::string& file) {
    std::error_code error;
    const auto path = std::filesystem::absolute(file, error);
    return error || file.empty() ? file : path.string();
}

GVariant* argumentsOf(const Settings& settings, std::string_view method) {
    const auto* const preset = settings.preset.c_str();
    const auto file = absolutePath(settings.file);
    if (method == "store_subpreset")
        return g_variant_new("(@asss)", stringArray(settings.keys), preset, file.c_str());
    if (method == "in_preset")
        return g_variant_new("(s@as)", preset, stringArray(settings.keys));
    if (method == "is_preset" || method == "load_default")
        return g_variant_new("(s)", preset);
    if (method == "die")
        return nullptr;
    return g_variant_new("(ss)", preset, file.c_str());
}

// D-Bus carries nothing but UTF-8, and GLib treats anything else as a programming error.
bool isSendable(const Settings& settings) {
    bool sendable = isUtf8(settings.preset) && isUtf8(settings.file);
    for (const auto& key : settings.keys)
        sendable = sendable && isUtf8(key);
    return sendable;
}

ExitStatus statusOf(const Answer& answer, const Messages& messages) {
    if (!answer.values)
        return messages.fail(answer.error);
    gboolean yes = TRUE; // "die" answers nothing
    if (g_variant_check_format_string(answer.values.get(), "(b)", FALSE) != FALSE)
        g_variant_get(answer.values.get(), "(b)", &yes);
    return yes != FALSE ? ExitStatus::yes : ExitStatus::no;
}

} // namespace

ExitStatus callService(const Settings& settings, const char* method) {
    if (!isSendable(settings))
        return settings.messages.fail("names, keys and paths must be UTF-8");
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty())
        return settings.messages.fail(problem);
    const auto status =
        statusOf(bus.call(presetService, method, argumentsOf(settings, method)), settings.messages);
    const bool asked =
        std::string_view(method) == "is_preset" || std::string_view(method) == "in_preset";
    if (asked && status != ExitStatus::error)
        std::cout << (status == ExitStatus::yes ? "yes\n" : "no\n");
    return status;
}

ExitStatus showStatus(const Settings& settings) {
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty())
        return settings.messages.fail(problem);
    bool all = true;
    auto states = Json::object();
    for (const auto& service : {presetService, parameterHandler}) {
        const auto running = bus.isRunning(service);
        if (!running)
            return settings.messages.fail("the bus does not answer");
        all = all && *running;
        states[service.name] = *running;
        if (!settings.json)
            std::cout << service.name << (*running ? " is running\n" : " is not running\n");
    }
    if (settings.json)
        writeJson(states);
    return all ? ExitStatus::yes : ExitStatus::no;
}

} // namespace morvane::ctl
