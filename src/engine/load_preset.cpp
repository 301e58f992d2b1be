#include "engine/load_preset.h"

#include "core/preset_manager.h"
#include "engine/load_plan.h"
#include "engine/parameter_operations.h"
#include "engine/preset_backup.h"
#include "engine/preset_file.h"
#include "engine/retry.h"
#include "text/line_reader.h"

#include <syslog.h>

#include <cerrno>
#include <cstring>

namespace morvane {

namespace {

// Counts all entries, whether the plan takes them or not.
bool readEntries(const std::string& filePath, LoadPlan& plan, int& count) {
    std::FILE* raw = nullptr;
    if (!openPresetForRead(filePath, raw) || raw == nullptr) {
        syslog(LOG_ERR, "Error opening file: %s\n", filePath.c_str());
        return false;
    }
    const OwnedStream stream(raw);
    count = readPresetFile(
        stream.get(), [&plan](std::string_view line) { return plan.addAsWritten(line); },
        [&plan](PresetEntry& entry) { plan.add(entry); });
    if (std::ferror(stream.get()) != 0) {
        syslog(LOG_ERR, "Error reading file: %s (%s)\n", filePath.c_str(), std::strerror(errno));
        return false;
    }
    return true;
}

bool setAll(const ParameterOperations& operations, Transaction transaction,
            const RequestTexts& texts) {
    return withRetries("parm_set", [&] { return operations.parm_set(transaction, texts.set); }) &&
           withRetries("parm_set_status",
                       [&] { return operations.parm_set_status(transaction, texts.setStatus); });
}

bool resetAll(const ParameterOperations& operations, Transaction transaction,
              const RequestTexts& texts) {
    return withRetries("parm_reset",
                       [&] { return operations.parm_reset(transaction, texts.reset); }) &&
           withRetries("parm_reset_status", [&] {
               return operations.parm_reset_status(transaction, texts.resetStatus);
           });
}

bool commit(const ParameterOperations& operations, Transaction transaction) {
    return withRetries("parm_commit", [&] { return operations.parm_commit(transaction); });
}

bool refuseUnknown(const std::string& presetName) {
    syslog(LOG_ERR, "Unknown preset definition: %s\n", presetName.c_str());
    return false;
}

// Having nothing to do is not a failure.
bool acceptEmpty(int priority, const std::string& filePath) {
    syslog(priority, "Empty preset file: %s\n", filePath.c_str());
    return true;
}

} // namespace

bool loadPreset(const ParameterOperations* operations, const std::string& presetName,
                const std::string& filePath, const PresetManager& manager, Defaults defaults) {
    if (operations == nullptr)
        return false;
    const auto* const presetKeys = manager.findPreset(presetName);
    const KeySet noKeys;
    const bool withDefaults = defaults == Defaults::on;
    LoadPlan plan(manager, presetKeys != nullptr ? *presetKeys : noKeys);
    int entries = 0;
    if (!readEntries(filePath, plan, entries))
        return false;
    // An empty file is a mistake; one whose entries are all out of date is not.
    if (entries == 0 && !withDefaults)
        return acceptEmpty(LOG_ERR, filePath);
    if (presetKeys == nullptr || presetKeys->empty())
        return refuseUnknown(presetName);
    if (plan.empty() && !withDefaults)
        return acceptEmpty(LOG_INFO, filePath);
    const auto unset = withDefaults ? plan.unsetKeys() : KeysToReset{};
    const RequestTexts texts{.origin = filePath,
                             .keysAreUtf8 = presetKeys->isUtf8(),
                             .set = plan.values(),
                             .setStatus = plan.statusValues(),
                             .reset = unset.keys,
                             .resetStatus = unset.statusKeys};
    Transaction transaction = 0;
    const bool loaded = operations->isSendable(texts) &&
                        startTransaction(*operations, transaction) &&
                        setAll(*operations, transaction, texts) &&
                        (!withDefaults || resetAll(*operations, transaction, texts)) &&
                        commit(*operations, transaction);
    if (loaded)
        syslog(LOG_INFO, "loadPreset(): %s preset loaded (%s) from %s.\n", presetName.c_str(),
               withDefaults ? "with defaults" : "without defaults", filePath.c_str());
    return loaded;
}

bool loadDefaults(const ParameterOperations* operations, const std::string& presetName,
                  const PresetManager& manager) {
    if (operations == nullptr)
        return false;
    const auto* const presetKeys = manager.findPreset(presetName);
    if (presetKeys == nullptr)
        return refuseUnknown(presetName);
    if (presetKeys->empty()) {
        syslog(LOG_INFO, "Empty preset definition: %s\n", presetName.c_str());
        return false;
    }
    const auto keys = LoadPlan(manager, *presetKeys).unsetKeys();
    const RequestTexts texts{.origin = presetName,
                             .keysAreUtf8 = presetKeys->isUtf8(),
                             .reset = keys.keys,
                             .resetStatus = keys.statusKeys};
    Transaction transaction = 0;
    const bool loaded =
        operations->isSendable(texts) && startTransaction(*operations, transaction) &&
        resetAll(*operations, transaction, texts) && commit(*operations, transaction);
    if (loaded)
        syslog(LOG_INFO, "loadDefaults(): %s defaults loaded.\n", presetName.c_str());
    return loaded;
}

} // namespace morvane
