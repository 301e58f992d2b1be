#include "engine/load_preset.h"

#include "core/preset_manager.h"
#include "engine/load_plan.h"
#include "engine/parameter_operations.h"
#include "engine/preset_backup.h"
#include "engine/preset_file.h"
#include "engine/retry.h"
#include "text/line_reader.h"
#include "text/utf8.h"

#include <syslog.h>

#include <cerrno>
#include <cstring>

namespace morvane {

namespace {

bool failReading(const std::string& filePath, const std::string& reason) {
    syslog(LOG_ERR, "Error reading file: %s (%s)\n", filePath.c_str(), reason.c_str());
    return false;
}

// Counts all entries; the plan gets those before the first that cannot be sent.
bool readEntries(const std::string& filePath, LoadPlan& plan, int& count) {
    std::FILE* raw = nullptr;
    if (!openPresetForRead(filePath, raw) || raw == nullptr) {
        syslog(LOG_ERR, "Error opening file: %s\n", filePath.c_str());
        return false;
    }
    const OwnedStream stream(raw);
    std::string buffer;
    std::string unsendable;
    count = readPresetFile(stream.get(), [&](PresetEntry& entry) {
        if (!unsendable.empty())
            return;
        // The bus carries nothing but UTF-8. That is found out here, before anything is changed.
        const auto key = presetKey(entry, buffer);
        if (isUtf8(key) && isUtf8(entry.value))
            plan.add(entry);
        else
            unsendable = key;
    });
    if (std::ferror(stream.get()) != 0)
        return failReading(filePath, std::strerror(errno));
    if (!unsendable.empty())
        return failReading(filePath, printableText(unsendable) + " is not valid UTF-8");
    return true;
}

bool setAll(const ParameterOperations& handler, Transaction transaction, const LoadPlan& plan) {
    return withRetries("parm_set", [&] { return handler.parm_set(transaction, plan.values()); }) &&
           withRetries("parm_set_status",
                       [&] { return handler.parm_set_status(transaction, plan.statusValues()); });
}

// Puts those keys of a preset to their defaults that have not been set.
bool resetOthers(const ParameterOperations& handler, Transaction transaction,
                 const LoadPlan& plan) {
    const auto unset = plan.unsetKeys();
    return withRetries("parm_reset", [&] { return handler.parm_reset(transaction, unset.keys); }) &&
           withRetries("parm_reset_status",
                       [&] { return handler.parm_reset_status(transaction, unset.statusKeys); });
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
    const auto* const presetKeys = manager.findPreset(presetName);
    const KeySet noKeys;
    LoadPlan plan(manager, presetKeys != nullptr ? *presetKeys : noKeys);
    int entries = 0;
    if (!readEntries(filePath, plan, entries))
        return false;
    // An empty file is somebody's mistake, one whose entries are all out of date is not.
    if (entries == 0 && !withDefaults)
        return acceptEmpty(LOG_ERR, filePath);
    if (presetKeys == nullptr || presetKeys->empty())
        return refuseUnknown(presetName);
    if (plan.empty() && !withDefaults)
        return acceptEmpty(LOG_INFO, filePath);
    Transaction transaction = 0;
    const bool loaded = startTransaction(*handler, transaction) &&
                        setAll(*handler, transaction, plan) &&
                        (!withDefaults || resetOthers(*handler, transaction, plan)) &&
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
                        resetOthers(*handler, transaction, LoadPlan(manager, *presetKeys)) &&
                        commit(*handler, transaction);
    if (loaded)
        syslog(LOG_INFO, "loadDefaults(): %s defaults loaded.\n", presetName.c_str());
    return loaded;
}

} // namespace morvane
