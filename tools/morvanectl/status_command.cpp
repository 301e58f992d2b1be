// morvanectl status: whether the two services are there and work.

#include "bus_client.h"
#include "commands.h"
#include "output.h"
#include "service_facts.h"

#include <array>
#include <chrono>
#include <iostream>
#include <optional>

namespace morvane::ctl {

namespace {

/// Whether something is well, and what was seen of it.
struct Verdict {
    std::optional<bool> isWell; ///< nothing if that is not known
    std::string text;
};

struct ServiceState {
    bool isRunning = false;
    std::optional<Process> process;
};

struct State {
    ServiceState presetService;
    ServiceState parameterHandler;
    Verdict presets;
    Verdict values;

    bool isWell() const {
        return presetService.isRunning && parameterHandler.isRunning &&
               presets.isWell.value_or(true) && values.isWell.value_or(true);
    }
};

TimeLimit questionLimit(const Settings& settings) {
    return settings.timeLimit.value_or(std::chrono::seconds(2));
}

Verdict presetVerdict(const BusClient& bus, const Settings& settings, const FilesAtHand& files) {
    if (!files.variant)
        return {std::nullopt, files.whyNot};
    const auto comparison = comparePresets(bus, *files.variant, questionLimit(settings));
    const auto& [known, missing, surplus, whyNot] = comparison;
    if (!whyNot.empty())
        return {false, whyNot};
    if (comparison.hasNone())
        return {false, "the service has none of " + settings.presetDefFile};
    std::vector<std::string> parts;
    if (!missing.empty())
        parts.push_back("the service lacks " + shortList(missing));
    if (!surplus.empty())
        parts.push_back("the service has " + shortList(surplus) + ", which this variant lacks");
    if (!parts.empty())
        return {false, joined(parts, "; ")};
    return {true, "the service has all " + std::to_string(known) + " of " + settings.presetDefFile};
}

// A key that any load or store may send.
std::vector<std::string> keyToRead(const FilesAtHand& files) {
    if (!files.variant)
        return {};
    for (const auto& [name, keys] : files.variant->manager.presets()) {
        if (keys.isUtf8())
            return {std::string(keys[0].view())};
    }
    return {};
}

Verdict valueVerdict(const BusClient& bus, const Settings& settings, const FilesAtHand& files) {
    const auto keys = keyToRead(files);
    const auto answer = readKeys(bus, keys, questionLimit(settings));
    const bool isRefused = answer.outcome == Answer::Outcome::refused;
    if (!answer.values && !isRefused)
        return {false, answer.error};
    if (keys.empty())
        return {true, "the Parameter Handler answers"};
    if (isRefused)
        return {false, "the Parameter Handler refuses to read " + keys[0] + ": " + answer.error};
    return {true, "the Parameter Handler reads " + keys[0]};
}

std::optional<State> look(const BusClient& bus, const Settings& settings) {
    State state;
    const std::array services{std::pair(presetService, &state.presetService),
                              std::pair(parameterHandler, &state.parameterHandler)};
    for (const auto& [service, seen] : services) {
        const auto isRunning = bus.isRunning(service);
        if (!isRunning)
            return std::nullopt;
        *seen = {*isRunning,
                 *isRunning ? processOf(bus, service, settings.timeLimit) : std::nullopt};
    }
    const auto files = readFilesAtHand(settings);
    if (state.presetService.isRunning)
        state.presets = presetVerdict(bus, settings, files);
    if (state.parameterHandler.isRunning)
        state.values = valueVerdict(bus, settings, files);
    return state;
}

std::string processText(const ServiceState& state) {
    if (!state.isRunning)
        return "not running";
    if (!state.process)
        return "running; the bus does not say in which process";
    const auto& [id, program] = *state.process;
    const auto text = "running; process " + std::to_string(id);
    return text +
           (program.empty() ? ", which cannot be seen; it may have detached" : ", " + program);
}

void write(const char* what, const Verdict& verdict) {
    if (verdict.text.empty())
        return;
    const char* const judgement = !verdict.isWell ? "not known: " : *verdict.isWell ? "" : "bad: ";
    std::cout << what << judgement << verdict.text << '\n';
}

void writeText(const State& state, const BusClient& bus) {
    std::cout << "bus: " << bus.address() << '\n'
              << presetService.name << ": " << processText(state.presetService) << '\n'
              << parameterHandler.name << ": " << processText(state.parameterHandler) << '\n';
    write("presets: ", state.presets);
    write("values: ", state.values);
}

Json jsonOf(const ServiceState& state) {
    const auto& process = state.process;
    return {{"running", state.isRunning},
            {"process", process ? Json(process->id) : Json()},
            {"program", process && !process->program.empty() ? Json(process->program) : Json()}};
}

Json jsonOf(const Verdict& verdict) {
    return {{"well", verdict.isWell ? Json(*verdict.isWell) : Json()},
            {"text", verdict.text.empty() ? Json() : Json(verdict.text)}};
}

void writeAsJson(const State& state, const BusClient& bus) {
    writeJson({{"bus", bus.address()},
               {presetService.name, jsonOf(state.presetService)},
               {parameterHandler.name, jsonOf(state.parameterHandler)},
               {"presets", jsonOf(state.presets)},
               {"values", jsonOf(state.values)}});
}

} // namespace

ExitStatus showStatus(const Settings& settings) {
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty())
        return settings.messages.fail(problem);
    const auto state = look(bus, settings);
    if (!state)
        return settings.messages.fail("the bus does not answer");
    settings.json ? writeAsJson(*state, bus) : writeText(*state, bus);
    return state->isWell() ? ExitStatus::yes : ExitStatus::no;
}

} // namespace morvane::ctl
