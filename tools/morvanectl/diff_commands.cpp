// morvanectl diff: the values that differ between two preset data files, or a file and the device.

#include "bus_client.h"
#include "commands.h"
#include "data_file.h"
#include "engine/load_plan.h"
#include "engine/preset_file.h"
#include "output.h"
#include "parameter_values.h"
#include "paramhandler/send_check.h"
#include "variant.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <optional>

namespace morvane::ctl {

namespace {

using Values = std::map<std::string, std::string>;

struct Difference {
    std::string key;
    std::optional<std::string> first;
    std::optional<std::string> second;
    bool isReset = false; ///< the first is the default, whatever that is
};

// Hands the file that a load would read to `read`, as a stream.
// @return false, with a message, if it cannot be read to its end.
bool readFile(const std::string& file, const Messages& messages,
              const std::function<void(std::FILE*)>& read) {
    const auto source = fileToLoad(file, messages);
    const auto stream = source ? openDataFile(*source, messages) : nullptr;
    if (!stream)
        return false;
    read(stream.get());
    return isAtEnd(stream.get(), *source, messages);
}

// Of two lines with the same key the second counts, as it does when both are loaded.
std::optional<Values> readValues(const std::string& file, const Messages& messages) {
    Values values;
    const bool isRead = readFile(file, messages, [&values](std::FILE* stream) {
        readPresetFile(stream, [&](PresetEntry& entry) { values[presetKey(entry)] = entry.value; });
    });
    return isRead ? std::optional(std::move(values)) : std::nullopt;
}

std::optional<std::string> find(const Values& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::vector<Difference> differences(const Values& first, const Values& second) {
    std::vector<Difference> result;
    Values all = first;
    all.insert(second.begin(), second.end());
    for (const auto& [key, value] : all) {
        Difference difference{key, find(first, key), find(second, key)};
        if (difference.first != difference.second)
            result.push_back(std::move(difference));
    }
    return result;
}

void write(const Difference& difference) {
    const auto& [key, first, second, isReset] = difference;
    if (isReset)
        std::cout << "- " << key << " (reset to its default)\n";
    if (first)
        std::cout << "- " << key << '=' << *first << '\n';
    if (second)
        std::cout << "+ " << key << '=' << *second << '\n';
}

ExitStatus show(const std::vector<Difference>& differences, bool asJson) {
    auto list = Json::array();
    for (const auto& difference : differences) {
        const auto& [key, first, second, isReset] = difference;
        list.push_back({{"key", key},
                        {"first", first ? Json(*first) : Json()},
                        {"second", second ? Json(*second) : Json()},
                        {"reset", isReset}});
        if (!asJson)
            write(difference);
    }
    if (asJson)
        writeJson(list);
    return differences.empty() ? ExitStatus::yes : ExitStatus::no;
}

// The live values of all keys, read in one call.
std::optional<Values> liveValues(const Settings& settings, const std::vector<std::string>& keys) {
    Values values;
    if (keys.empty())
        return values;
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty()) {
        settings.messages.fail(problem);
        return std::nullopt;
    }
    auto live = readLiveValues(bus, keys);
    if (!live.error.empty()) {
        settings.messages.fail(live.error);
        return std::nullopt;
    }
    for (std::size_t i = 0; i < keys.size(); ++i)
        values[keys[i]] = std::move(live.texts[i]);
    return values;
}

/// What a load would send.
struct Load {
    Values values;
    std::vector<std::string> keysToReset;
};

// Nothing, with a message, if the load would fail before it sends anything.
std::optional<Load> planLoad(const Settings& settings, const Variant& variant) {
    const auto& keys = *variant.manager.findPreset(settings.preset);
    LoadPlan plan(variant.manager, keys);
    const bool isRead = readFile(settings.file, settings.messages, [&plan](std::FILE* stream) {
        readPresetFile(
            stream, [&plan](std::string_view line) { return plan.addAsWritten(line); },
            [&plan](PresetEntry& entry) { plan.add(entry); });
    });
    if (!isRead)
        return std::nullopt;
    const auto unset = settings.withDefaults ? plan.unsetKeys() : KeysToReset{};
    logToStandardError();
    if (!isSendable({.origin = settings.file,
                     .keysAreUtf8 = keys.isUtf8(),
                     .set = plan.values(),
                     .setStatus = plan.statusValues(),
                     .reset = unset.keys,
                     .resetStatus = unset.statusKeys}))
        return std::nullopt;
    Load load;
    for (const auto& list : {plan.values(), plan.statusValues()}) {
        for (const auto& [key, value] : list)
            load.values[std::string(key.view())] = value.view();
    }
    for (const auto& list : {unset.keys, unset.statusKeys}) {
        for (const auto& key : list)
            load.keysToReset.emplace_back(key.view());
    }
    return load;
}

} // namespace

ExitStatus diffFiles(const Settings& settings) {
    const auto first = readValues(settings.file, settings.messages);
    const auto second = readValues(settings.otherFile, settings.messages);
    if (!first || !second)
        return ExitStatus::error;
    return show(differences(*first, *second), settings.json);
}

// The default of a key is decided by the Parameter Handler, so that it may be the live value.
ExitStatus diffLive(const Settings& settings) {
    const auto variant = readVariantWithPreset(settings);
    const auto load = variant ? planLoad(settings, *variant) : std::nullopt;
    if (!load)
        return ExitStatus::error;
    auto keys = load->keysToReset;
    for (const auto& [key, value] : load->values)
        keys.push_back(key);
    auto live = liveValues(settings, keys);
    if (!live)
        return ExitStatus::error;
    std::vector<Difference> resets;
    for (const auto& key : load->keysToReset)
        resets.push_back({key, std::nullopt, live->extract(key).mapped(), true});
    auto all = differences(load->values, *live);
    all.insert(all.end(), resets.begin(), resets.end());
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
    return show(all, settings.json);
}

} // namespace morvane::ctl
