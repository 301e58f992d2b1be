// morvanectl monitor: shows the services' comings and goings, and what commits change.

#include "bus_watch.h"
#include "commands.h"
#include "output.h"
#include "parameter_values.h"
#include "text/utf8.h"

#include <array>
#include <cerrno>
#include <iostream>
#include <string>

namespace morvane::ctl {

namespace {

/// What became of a key: its value, or why that cannot be read.
struct Reading {
    std::optional<std::string> value;
    std::string error;
};

std::vector<Reading> readEach(const BusClient& bus, const std::vector<std::string>& keys) {
    std::vector<Reading> readings(keys.size());
    if (keys.empty())
        return readings;
    auto all = readLiveValues(bus, keys);
    for (std::size_t i = 0; i < all.texts.size(); ++i)
        readings[i].value = std::move(all.texts[i]);
    if (all.error.empty())
        return readings;
    const auto readAlone = [&](std::size_t i) {
        auto alone = readLiveValues(bus, {keys[i]});
        if (alone.error.empty())
            readings[i].value = std::move(alone.texts.front());
        return alone.error;
    };
    const auto note = [&](std::size_t i, const std::string& refusal) {
        readings[i].error = refusal;
    };
    const auto other = findRefused(keys, all.error, readAlone, note);
    for (auto& reading : readings) {
        if (!reading.value && reading.error.empty())
            reading.error = other;
    }
    return readings;
}

Json objectOf(const std::string& key, const Reading& reading) {
    if (reading.value)
        return valueObject(key, *reading.value);
    return {{"key", key}, {"value", nullptr}, {"error", reading.error}};
}

void showOwner(const BusEvent& event, const Settings& settings) {
    const bool isRunning = !event.owner.empty();
    if (settings.json)
        std::cout << Json{{"name", event.service->name},
                          {"owner", isRunning ? Json(event.owner) : Json()}}
                         .dump();
    else
        std::cout << event.service->name << (isRunning ? " is running" : " is not running");
    std::cout << std::endl;
}

void showValues(const std::vector<std::string>& keys, const std::vector<Reading>& readings,
                const Settings& settings) {
    auto list = Json::array();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto& [value, error] = readings[i];
        if (settings.json)
            list.push_back(objectOf(keys[i], readings[i]));
        else if (value)
            std::cout << valueLine(keys[i], *value) << '\n';
        else
            std::cout << printableText(keys[i]) << " (" << printableText(error) << ")\n";
    }
    if (settings.json)
        std::cout << Json{{"values", std::move(list)}}.dump() << '\n';
    std::cout.flush();
}

// The signal has the keys alone, so their values are read.
void showCommit(const BusEvent& event, const BusClient& bus, const BusWatch& watch,
                const Settings& settings) {
    auto* const arguments = event.arguments.get();
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(as)")) == FALSE) {
        settings.messages.warn(
            std::string("a signal of the Parameter Handler has values of type ") +
            g_variant_get_type_string(arguments));
        return;
    }
    const OwnedVariant list(g_variant_get_child_value(arguments, 0));
    const auto keys = stringsOf(list.get());
    const auto readings = readEach(bus, keys);
    if (!watch.hasEnded())
        showValues(keys, readings, settings);
}

ExitStatus watchBus(const BusClient& bus, const Settings& settings) {
    using enum BusEvent::Kind;
    static constexpr std::array services{presetService, parameterHandler};
    BusWatch watch(bus, services, parameterHandler, "transaction");
    while (std::cout) {
        const auto event = watch.next();
        switch (event.kind) {
        case ownerChanged:
            showOwner(event, settings);
            break;
        case signalled:
            showCommit(event, bus, watch, settings);
            break;
        case busEnded:
            return settings.messages.fail("the bus ended");
        case interrupted:
        case outputClosed:
            return ExitStatus::yes;
        }
    }
    // A reader that has seen enough, as in "morvanectl monitor | head", is no failure.
    if (settings.standardOutput->error() == EPIPE)
        settings.standardOutput->discard();
    return ExitStatus::yes;
}

} // namespace

ExitStatus monitorBus(const Settings& settings) {
    std::string problem;
    const BusClient bus(settings, problem);
    return problem.empty() ? watchBus(bus, settings) : settings.messages.fail(problem);
}

} // namespace morvane::ctl
