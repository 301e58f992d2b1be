#include "support/parameter_recorder.h"

namespace morvane::test {

namespace {

constexpr Transaction transactionId = 7;

std::string textOf(Transaction transaction) {
    return " " + std::to_string(transaction);
}

} // namespace

ParameterOperations ParameterRecorder::operations() {
    return {
        .parm_start_trans =
            [this](Transaction& started) {
                started = transactionId;
                return record("parm_start_trans", "");
            },
        .parm_end_trans =
            [this](Transaction transaction) {
                return record("parm_end_trans", textOf(transaction));
            },
        .parm_get =
            [this](Transaction transaction, const KeySet& keys, std::vector<std::string>& read) {
                std::string arguments = textOf(transaction);
                for (const auto& key : keys)
                    arguments += " " + key;
                if (!record("parm_get", arguments))
                    return false;
                read.clear();
                for (const auto& key : keys)
                    read.push_back(values.contains(key) ? values[key] : "?");
                return true;
            },
    };
}

bool ParameterRecorder::record(const std::string& operation, const std::string& arguments) {
    const bool refuses = refusals[operation]-- > 0;
    calls.push_back(operation + arguments + (refuses ? " refused" : ""));
    return !refuses;
}

} // namespace morvane::test
