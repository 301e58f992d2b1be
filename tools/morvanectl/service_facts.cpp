#include "service_facts.h"

#include "text/utf8.h"

#include <chrono>
#include <fstream>
#include <set>
#include <utility>

namespace morvane::ctl {

namespace {

// The name under which a process was started, without its folder.
std::string programOf(unsigned process) {
    const auto folder = "/proc/" + std::to_string(process);
    std::string name;
    std::getline(std::ifstream(folder + "/cmdline"), name, '\0');
    return name.substr(name.rfind('/') + 1);
}

// What the bus answers about the connection of a service.
std::optional<unsigned> numberOf(const BusClient& bus, const char* method, const Service& service,
                                 const TimeLimit& limit) {
    const auto answer = bus.call(busDriver, method, g_variant_new("(s)", service.name), limit);
    if (!answer.values || g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(u)")) == FALSE)
        return std::nullopt;
    guint32 number = 0;
    g_variant_get(answer.values.get(), "(u)", &number);
    return number;
}

Answer isPreset(const BusClient& bus, const std::string& preset, const TimeLimit& limit) {
    return bus.call(presetService, "is_preset", g_variant_new("(s)", preset.c_str()), limit);
}

// Each name once, without those that cannot be sent.
std::set<std::string> presetNames(const Variant& variant) {
    std::set<std::string> names;
    for (const auto& preset : variant.definitions.presets.presets) {
        if (isUtf8(preset.name))
            names.emplace(preset.name);
    }
    return names;
}

} // namespace

std::optional<Process> processOf(const BusClient& bus, const Service& service,
                                 const TimeLimit& limit) {
    const auto id = numberOf(bus, "GetConnectionUnixProcessID", service, limit);
    return id ? std::optional(Process{*id, programOf(*id)}) : std::nullopt;
}

std::optional<unsigned> userOf(const BusClient& bus, const Service& service,
                               const TimeLimit& limit) {
    return numberOf(bus, "GetConnectionUnixUser", service, limit);
}

FilesAtHand readFilesAtHand(const Settings& settings) {
    std::vector<std::string> problems;
    auto quiet = settings;
    quiet.messages = Messages::keptIn(problems);
    auto variant = readVariant(quiet);
    if (!problems.empty())
        return {std::nullopt, problems.front()};
    return {std::move(variant), {}};
}

PresetComparison comparePresets(const BusClient& bus, const Variant& variant,
                                const TimeLimit& limit) {
    const auto begin = std::chrono::steady_clock::now();
    PresetComparison comparison;
    for (const auto& preset : presetNames(variant)) {
        const auto answer = isPreset(bus, preset, limit);
        const auto known = yesOrNo(answer);
        if (!known)
            return {.whyNot = answer.error.empty() ? "it answers is_preset with neither yes nor no"
                                                   : answer.error};
        const bool isHere = variant.manager.is_preset(preset);
        if (*known && isHere)
            ++comparison.known;
        else if (*known)
            comparison.surplus.push_back(preset);
        else if (isHere)
            comparison.missing.push_back(preset);
        if (limit && std::chrono::steady_clock::now() - begin > *limit)
            return {.whyNot = "it did not answer for all presets " + withinText(limit)};
    }
    return comparison;
}

Answer readKeys(const BusClient& bus, const std::vector<std::string>& keys,
                const TimeLimit& limit) {
    constexpr guint32 noOption = 0;
    if (keys.size() > 1)
        return bus.call(parameterHandler, "single_get_bulk",
                        g_variant_new("(u@as)", noOption, stringArray(keys)), limit);
    const auto key = keys.empty() ? std::string() : keys.front();
    return bus.call(parameterHandler, "single_get", g_variant_new("(s)", key.c_str()), limit);
}

} // namespace morvane::ctl
