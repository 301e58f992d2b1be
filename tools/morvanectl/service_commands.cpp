// The subcommands that call the preset service.

#include "bus_client.h"
#include "call_failure.h"
#include "commands.h"
#include "output.h"
#include "text/utf8.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string_view>

namespace morvane::ctl {

namespace {

GVariant* argumentsOf(const PresetCall& call) {
    const auto* const preset = call.preset.c_str();
    const auto* const file = call.file.c_str();
    if (call.method == "store_subpreset")
        return g_variant_new("(@asss)", stringArray(call.keys), preset, file);
    if (call.method == "in_preset")
        return g_variant_new("(s@as)", preset, stringArray(call.keys));
    if (call.method == "is_preset" || call.method == "load_default")
        return g_variant_new("(s)", preset);
    if (call.method == "die")
        return nullptr;
    return g_variant_new("(ss)", preset, file);
}

// D-Bus carries nothing but UTF-8, and GLib treats anything else as a programming error.
bool isSendable(const PresetCall& call) {
    return isUtf8(call.preset) && isUtf8(call.file) && std::ranges::all_of(call.keys, isUtf8);
}

// The daemon has a different working directory, so the file is sent with its folder.
// @return nothing, with a message, if that is not known.
std::optional<PresetCall> callOf(const Settings& settings, const char* method) {
    std::error_code error;
    const auto file = settings.file.empty()
                          ? settings.file
                          : std::filesystem::absolute(settings.file, error).string();
    if (error) {
        settings.messages.fail("cannot tell the folder of " + settings.file + ": " +
                               error.message());
        return std::nullopt;
    }
    PresetCall call{method, settings.preset, file, settings.keys};
    if (isSendable(call))
        return call;
    settings.messages.fail(
        std::string("names, keys and paths must be UTF-8") +
        (isUtf8(settings.file) && !isUtf8(file) ? "; the name of the working folder is not" : ""));
    return std::nullopt;
}

ExitStatus statusOf(const Answer& answer, const Messages& messages) {
    if (!answer.values)
        return messages.fail(answer.error);
    return yesOrNo(answer).value_or(true) ? ExitStatus::yes : ExitStatus::no; // "die" says nothing
}

} // namespace

ExitStatus callService(const Settings& settings, const char* method) {
    const auto call = callOf(settings, method);
    if (!call)
        return ExitStatus::error;
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty())
        return settings.messages.fail(problem);
    const auto answer = bus.call(presetService, method, argumentsOf(*call));
    const auto status = statusOf(answer, settings.messages);
    const bool asked = call->method == "is_preset" || call->method == "in_preset";
    if (asked && status != ExitStatus::error)
        std::cout << (status == ExitStatus::yes ? "yes\n" : "no\n");
    else if (status != ExitStatus::yes)
        explainFailure(bus, settings, *call, answer.outcome);
    return status;
}

} // namespace morvane::ctl
