// morvanectl diff: the values that differ between two preset data files, or a file and the device.

#include "bus_client.h"
#include "commands.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "output.h"
#include "variant.h"

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
};

// The values of a file, without the entries that `takes` refuses. Of two lines with the same key
// the second counts, as it does when both are loaded.
template <typename Takes>
std::optional<Values> readValues(const std::string& file, Takes takes) {
    const auto stream = openDataFile(file);
    if (!stream)
        return std::nullopt;
    Values values;
    readPresetFile(stream.get(), [&](PresetEntry& entry) {
        if (takes(entry))
            values[presetKey(entry)] = entry.value;
    });
    return values;
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

ExitStatus show(const std::vector<Difference>& differences, bool asJson) {
    auto list = Json::array();
    for (const auto& [key, first, second] : differences) {
        list.push_back({{"key", key},
                        {"first", first ? Json(*first) : Json()},
                        {"second", second ? Json(*second) : Json()}});
        if (asJson)
            continue;
        if (first)
            std::cout << "- " << key << '=' << *first << '\n';
        if (second)
            std::cout << "+ " << key << '=' << *second << '\n';
    }
    if (asJson)
        writeJson(list);
    return differences.empty() ? ExitStatus::yes : ExitStatus::no;
}

// The live values of all keys, read in one call.
std::optional<Values> liveValues(const std::string& address, const std::vector<std::string>& keys) {
    constexpr guint32 noOption = 0;
    std::string problem;
    const BusClient bus(address, problem);
    if (!problem.empty()) {
        fail(problem);
        return std::nullopt;
    }
    const auto answer = bus.call(parameterHandler, "single_get_bulk",
                                 g_variant_new("(u@as)", noOption, stringArray(keys)));
    if (!answer.values) {
        fail(answer.error);
        return std::nullopt;
    }
    if (g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(as)")) == FALSE) {
        fail("the Parameter Handler answered something else than texts");
        return std::nullopt;
    }
    const OwnedVariant list(g_variant_get_child_value(answer.values.get(), 0));
    auto texts = stringsOf(list.get());
    if (texts.size() != keys.size()) {
        fail("the Parameter Handler answered another number of values");
        return std::nullopt;
    }
    Values values;
    for (std::size_t i = 0; i < keys.size(); ++i)
        values[keys[i]] = std::move(texts[i]);
    return values;
}

} // namespace

ExitStatus diffFiles(const Settings& settings) {
    const auto all = [](const PresetEntry&) { return true; };
    const auto first = readValues(settings.file, all);
    const auto second = readValues(settings.otherFile, all);
    if (!first || !second)
        return ExitStatus::error;
    return show(differences(*first, *second), settings.json);
}

ExitStatus diffLive(const Settings& settings) {
    auto variantSettings = settings;
    variantSettings.preset = settings.livePreset;
    const auto variant = readVariantWithPreset(variantSettings);
    if (!variant)
        return ExitStatus::error;
    const auto& keys = *variant->manager.findPreset(settings.livePreset);
    const auto values = readValues(settings.file, [&](PresetEntry& entry) {
        return translateEntry(variant->manager.translation(), entry) &&
               keys.contains(presetKey(entry));
    });
    if (!values)
        return ExitStatus::error;
    const auto live = liveValues(settings.address, keys.strings());
    if (!live)
        return ExitStatus::error;
    return show(differences(*values, *live), settings.json);
}

} // namespace morvane::ctl
