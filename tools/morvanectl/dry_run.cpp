// morvanectl load --dry-run: the calls that the Parameter Handler would get, made by the code of
// the load itself.

#include "commands.h"
#include "data_check.h"
#include "engine/load_preset.h"
#include "engine/parameter_operations.h"
#include "engine/preset_backup.h"
#include "output.h"
#include "paramhandler/send_check.h"
#include "variant.h"

#include <unistd.h>

#include <iostream>
#include <string_view>

namespace morvane::ctl {

namespace {

/// One call to the Parameter Handler.
struct Call {
    std::string method;
    std::vector<std::string> keys;
    std::vector<std::string> values; ///< one for each key of a set, none of a reset
};

/// Records the calls that the engine makes.
class CallList {
public:
    ParameterOperations operations() {
        ParameterOperations operations;
        operations.isSendable = isSendable;
        operations.parm_start_trans = [this](Transaction&) { return add({"start", {}, {}}); };
        operations.parm_set = [this](Transaction, auto values) { return set("set", values); };
        operations.parm_set_status = [this](Transaction, auto values) {
            return set("set_status", values);
        };
        operations.parm_reset = [this](Transaction, auto keys) { return reset("reset", keys); };
        operations.parm_reset_status = [this](Transaction, auto keys) {
            return reset("reset_status", keys);
        };
        operations.parm_commit = [this](Transaction) {
            return add({"commit", {}, {}}) && add({"end", {}, {}});
        };
        return operations;
    }

    const std::vector<Call>& calls() const { return calls_; }

private:
    bool add(Call call) {
        if (call.keys.size() > 1)
            call.method += "_bulk";
        calls_.push_back(std::move(call));
        return true;
    }

    bool set(const char* method, std::span<const KeyValue> values) {
        Call call{method, {}, {}};
        for (const auto& [key, value] : values) {
            call.keys.emplace_back(key.view());
            call.values.emplace_back(value.view());
        }
        return values.empty() || add(std::move(call));
    }

    bool reset(const char* method, std::span<const CStringView> keys) {
        Call call{method, {}, {}};
        for (const auto& key : keys)
            call.keys.emplace_back(key.view());
        return keys.empty() || add(std::move(call));
    }

    std::vector<Call> calls_;
};

void writeCalls(const std::vector<Call>& calls) {
    for (const auto& [method, keys, values] : calls) {
        std::cout << method << '\n';
        for (std::size_t i = 0; i < keys.size(); ++i)
            std::cout << "    " << keys[i] << (values.empty() ? "" : "=" + values[i]) << '\n';
    }
}

void writeCallsAsJson(const std::vector<Call>& calls) {
    auto list = Json::array();
    for (const auto& [method, keys, values] : calls) {
        Json call{{"method", method}};
        if (!keys.empty())
            call["keys"] = keys;
        if (!values.empty())
            call["values"] = values;
        list.push_back(std::move(call));
    }
    writeJson(list);
}

// Of a file that a load cannot read, the load itself says so.
void noteFindings(const Settings& settings, const std::string& file, const Variant& variant) {
    if (!variant.manager.is_preset(settings.preset) || access(file.c_str(), R_OK) != 0)
        return;
    DataCheck check(variant, settings.preset, file, Reports::off);
    readDataLines(file, settings.messages, [&](const DataLine& line) {
        for (const auto& finding : check.check(line).findings())
            noteFinding(finding, settings.messages);
    });
}

bool loadFileInto(CallList& list, const Settings& settings, const Variant& variant,
                  Defaults defaults) {
    const auto file = fileToLoad(settings.file, settings.messages);
    if (!file)
        return false;
    if (lookUpBackup(*file) == BackupState::leftOver) { // which reading the file would put back
        settings.messages.note(*file + " has a backup, too: " + backupOf(*file));
        return false;
    }
    const auto operations = list.operations();
    const bool loaded = loadPreset(&operations, settings.preset, *file, variant.manager, defaults);
    noteFindings(settings, *file, variant);
    return loaded;
}

bool loadInto(CallList& list, const Settings& settings, std::string_view method,
              const Variant& variant) {
    const auto operations = list.operations();
    if (method == "load_default")
        return loadDefaults(&operations, settings.preset, variant.manager);
    return loadFileInto(list, settings, variant,
                        method == "load_with_default" ? Defaults::on : Defaults::off);
}

} // namespace

ExitStatus showLoad(const Settings& settings, const char* method) {
    const auto variant = readVariant(settings);
    if (!variant)
        return ExitStatus::error;
    logToStandardError();
    CallList list;
    if (!loadInto(list, settings, method, *variant))
        return ExitStatus::error;
    settings.json ? writeCallsAsJson(list.calls()) : writeCalls(list.calls());
    return ExitStatus::yes;
}

} // namespace morvane::ctl
