#include "engine/load_preset.h"

#include "core/preset_manager.h"
#include "engine/parameter_operations.h"
#include "engine/preset_backup.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "engine/retry.h"
#include "text/line_reader.h"
#include "text/utf8.h"

#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane {

namespace {

/// Values to set: those of read-only parameters are status.
struct Assignments {
    std::vector<KeyValue> values;
    std::vector<KeyValue> statusValues;
};

bool isReadOnlyParameter(std::string_view key, const PresetManager& manager) {
    return manager.isReadOnly(key.substr(0, key.find('[')));
}

// The bus carries nothing but UTF-8. That is found out here, before anything is changed.
bool isSendable(const PresetEntry& entry) {
    return isUtf8(entry.name) && isUtf8(entry.value) &&
           std::all_of(entry.indices.begin(), entry.indices.end(), isUtf8);
}

bool failReading(const std::string& filePath, const std::string& reason) {
    syslog(LOG_ERR, "Error reading file: %s (%s)\n", filePath.c_str(), reason.c_str());
    return false;
}

bool readEntries(const std::string& filePath, PresetEntryList& entries) {
    std::FILE* raw = nullptr;
    if (!openPresetForRead(filePath, raw) || raw == nullptr) {
        syslog(LOG_ERR, "Error opening file: %s\n", filePath.c_str());
        return false;
    }
    const OwnedStream stream(raw);
    readPresetFile(stream.get(), entries);
    if (std::ferror(stream.get()) != 0)
        return failReading(filePath, std::strerror(errno));
    const auto bad = std::find_if_not(entries.begin(), entries.end(), isSendable);
    if (bad == entries.end())
        return true;
    return failReading(filePath, printableText(presetKey(*bad)) + " is not valid UTF-8");
}

// In file order; a key that the file has twice is set twice.
Assignments assignmentsOf(PresetEntryList entries, const KeySet& presetKeys,
                          const PresetManager& manager) {
    Assignments assignments;
    for (auto& entry : entries) {
        auto key = presetKey(entry);
        if (!presetKeys.contains(key))
            continue;
        auto& list = manager.isReadOnly(entry.name) ? assignments.statusValues : assignments.values;
        list.emplace_back(std::move(key), std::move(entry.value));
    }
    return assignments;
}

bool setAll(const ParameterOperations& handler, Transaction transaction,
            const Assignments& assignments) {
    return withRetries("parm_set",
                       [&] { return handler.parm_set(transaction, assignments.values); }) &&
           withRetries("parm_set_status", [&] {
               return handler.parm_set_status(transaction, assignments.statusValues);
           });
}

// The keys of the assignments in order, borrowed from them.
std::vector<std::string_view> sortedKeys(const Assignments& assignments) {
    std::vector<std::string_view> keys;
    keys.reserve(assignments.values.size() + assignments.statusValues.size());
    for (const auto* const list : {&assignments.values, &assignments.statusValues}) {
        for (const auto& [key, value] : *list)
            keys.push_back(key);
    }
    if (!std::is_sorted(keys.begin(), keys.end())) // as what a store has written is
        std::sort(keys.begin(), keys.end());
    return keys;
}

// Puts those keys of a preset to their defaults that have not been set.
bool resetOthers(const ParameterOperations& handler, Transaction transaction,
                 const KeySet& presetKeys, const Assignments& assignments,
                 const PresetManager& manager) {
    const auto setKeys = sortedKeys(assignments);
    std::vector<std::string> others;
    std::set_difference(presetKeys.begin(), presetKeys.end(), setKeys.begin(), setKeys.end(),
                        std::back_inserter(others), std::less<>());
    std::vector<std::string> keys;
    std::vector<std::string> statusKeys;
    std::partition_copy(std::make_move_iterator(others.begin()),
                        std::make_move_iterator(others.end()), std::back_inserter(statusKeys),
                        std::back_inserter(keys),
                        [&](const std::string& key) { return isReadOnlyParameter(key, manager); });
    return withRetries("parm_reset", [&] { return handler.parm_reset(transaction, keys); }) &&
           withRetries("parm_reset_status",
                       [&] { return handler.parm_reset_status(transaction, statusKeys); });
}

bool commit(const ParameterOperations& handler, Transaction transaction) {
    return withRetries("parm_commit", [&] { return handler.parm_commit(transaction); });
}

bool refuseUnknown(const std::string& presetName) {
    syslog(LOG_ERR, "Unknown preset definition: %s\n", presetName.c_str());
    return false;
}

// Nothing to do is no failure.
bool acceptEmpty(int priority, const std::string& filePath) {
    syslog(priority, "Empty preset file: %s\n", filePath.c_str());
    return true;
}

} // namespace

bool loadPreset(const ParameterOperations* handler, const std::string& presetName,
                const std::string& filePath, const PresetManager& manager, bool withDefaults) {
    if (handler == nullptr)
        return false;
    PresetEntryList entries;
    if (!readEntries(filePath, entries))
        return false;
    // An empty file is somebody's mistake, one whose entries are all out of date is not.
    if (entries.empty() && !withDefaults)
        return acceptEmpty(LOG_ERR, filePath);
    translateEntries(manager, entries);
    const auto* const presetKeys = manager.findPreset(presetName);
    if (presetKeys == nullptr || presetKeys->empty())
        return refuseUnknown(presetName);
    if (entries.empty() && !withDefaults)
        return acceptEmpty(LOG_INFO, filePath);
    const auto assignments = assignmentsOf(std::move(entries), *presetKeys, manager);
    Transaction transaction = 0;
    const bool loaded =
        startTransaction(*handler, transaction) && setAll(*handler, transaction, assignments) &&
        (!withDefaults || resetOthers(*handler, transaction, *presetKeys, assignments, manager)) &&
        commit(*handler, transaction);
    if (loaded)
        syslog(LOG_INFO, "loadPreset(): %s preset loaded (%s) from %s.\n", presetName.c_str(),
               withDefaults ? "with defaults" : "without defaults", filePath.c_str());
    return loaded;
}

bool loadDefaults(const ParameterOperations* handler, const std::string& presetName,
                  const PresetManager& manager) {
    if (handler == nullptr)
        return false;
    const auto* const presetKeys = manager.findPreset(presetName);
    if (presetKeys == nullptr)
        return refuseUnknown(presetName);
    if (presetKeys->empty()) {
        syslog(LOG_INFO, "Empty preset definition: %s\n", presetName.c_str());
        return false;
    }
    Transaction transaction = 0;
    const bool loaded = startTransaction(*handler, transaction) &&
                        resetOthers(*handler, transaction, *presetKeys, {}, manager) &&
                        commit(*handler, transaction);
    if (loaded)
        syslog(LOG_INFO, "loadDefaults(): %s defaults loaded.\n", presetName.c_str());
    return loaded;
}

} // namespace morvane
