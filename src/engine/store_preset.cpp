#include "engine/store_preset.h"

#include "core/preset_manager.h"
#include "engine/parameter_operations.h"
#include "engine/preset_backup.h"
#include "engine/preset_file.h"
#include "engine/retry.h"

#include <syslog.h>

#include <utility>
#include <vector>

namespace morvane {

namespace {

/// The words in which the log messages of the two operations differ.
struct StoreWords {
    const char* operation;
    const char* done;
};

KeySet commonKeys(const KeySet& chosen, const KeySet& presetKeys) {
    std::vector<std::string> keys;
    for (const auto key : chosen) {
        if (presetKeys.contains(key.view()))
            keys.emplace_back(key.view());
    }
    return KeySet(std::move(keys));
}

using Keys = std::vector<CStringView>;

Keys listOf(const KeySet& keys) {
    return {keys.begin(), keys.end()};
}

bool isSendable(const ParameterOperations& operations, const KeySet& keys,
                const std::string& presetName) {
    return operations.isSendable(
        {.origin = presetName, .keysAreUtf8 = keys.isUtf8(), .get = listOf(keys)});
}

bool readValues(const ParameterOperations& operations, Transaction transaction, const KeySet& keys,
                ReceivedStrings& values) {
    const auto list = listOf(keys);
    return withRetries("parm_get", [&] { return operations.parm_get(transaction, list, values); });
}

bool endTransaction(const ParameterOperations& operations, Transaction transaction) {
    return withRetries("parm_end_trans", [&] { return operations.parm_end_trans(transaction); });
}

bool writeValues(const StoreWords& words, const KeySet& keys, const ReceivedStrings& values,
                 const std::string& presetName, const std::string& filePath) {
    std::FILE* stream = nullptr;
    if (!openPresetForWrite(filePath, stream) || stream == nullptr) {
        syslog(LOG_ERR, "%s(): Error opening file %s\n", words.operation, filePath.c_str());
        return false;
    }
    // An empty value ends the file, which is not an error; a failed write shows at close.
    writePresetFile(stream, keys, values.texts);
    // Programs that search the log for this line expect it before the close, without a line feed.
    syslog(LOG_INFO, "%s(): %s %s %s", words.operation, presetName.c_str(), words.done,
           filePath.c_str());
    return closePresetAfterWrite(filePath, stream);
}

// The transaction ends only after the file is safe; any earlier failure leaves it open.
bool storeKeys(const StoreWords& words, const ParameterOperations& operations,
               Transaction transaction, const KeySet& keys, const std::string& presetName,
               const std::string& filePath) {
    ReceivedStrings values;
    return readValues(operations, transaction, keys, values) &&
           writeValues(words, keys, values, presetName, filePath) &&
           endTransaction(operations, transaction);
}

} // namespace

bool storePreset(const ParameterOperations* operations, const std::string& presetName,
                 const std::string& filePath, const PresetManager& manager) {
    constexpr StoreWords words{"storePreset", "preset stored in"};
    if (operations == nullptr)
        return false;
    const auto* const keys = manager.findPreset(presetName);
    if (keys == nullptr || keys->empty()) {
        syslog(LOG_ERR, "storePreset(): Could not locate '%s' preset definition\n",
               presetName.c_str());
        return false;
    }
    Transaction transaction = 0;
    return isSendable(*operations, *keys, presetName) &&
           startTransaction(*operations, transaction) &&
           storeKeys(words, *operations, transaction, *keys, presetName, filePath);
}

bool storeSubPreset(const ParameterOperations* operations, const KeySet& subPresetKeys,
                    const std::string& presetName, const std::string& filePath,
                    const PresetManager& manager) {
    constexpr StoreWords words{"storeSubPreset", "sub-preset store completed in"};
    if (operations == nullptr)
        return false;
    if (subPresetKeys.empty()) {
        syslog(LOG_ERR, "storeSubPreset(): Sub-preset list is empty.\n");
        return false;
    }
    const auto* const presetKeys = manager.findPreset(presetName);
    if (presetKeys == nullptr) {
        syslog(LOG_ERR, "storeSubPreset(): Preset definition %s does not exist.\n",
               presetName.c_str());
        return false;
    }
    const auto keys = commonKeys(subPresetKeys, *presetKeys);
    Transaction transaction = 0;
    if (!isSendable(*operations, keys, presetName) || !startTransaction(*operations, transaction))
        return false;
    // Only now, so that the Parameter Handler sees a transaction start as with any other store.
    if (keys.empty()) {
        syslog(LOG_ERR,
               "storeSubPreset(): Sub-preset list contains no entries belonging to the %s preset "
               "definition.\n",
               presetName.c_str());
        return false;
    }
    return storeKeys(words, *operations, transaction, keys, presetName, filePath);
}

} // namespace morvane
