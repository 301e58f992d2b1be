#include "support/parameter_recorder.h"

#include "support/received_strings.h"

namespace morvane::test {

namespace {

constexpr Transaction transactionId = 7;

std::string textOf(Transaction transaction) {
    return " " + std::to_string(transaction);
}

std::string textOf(std::span<const KeyValue> values) {
    std::string text;
    for (const auto& [key, value] : values)
        text.append(" ").append(key.view()).append("=").append(value.view());
    return text;
}

std::string textOf(std::span<const CStringView> keys) {
    std::string text;
    for (const auto& key : keys)
        text.append(" ").append(key.view());
    return text;
}

std::string textOf(const RequestTexts& texts) {
    return std::string(texts.origin) + ":" + textOf(texts.get) + textOf(texts.set) +
           textOf(texts.setStatus) + textOf(texts.reset) + textOf(texts.resetStatus);
}

} // namespace

ParameterOperations ParameterRecorder::operations() {
    return {
        .isSendable =
            [this](const RequestTexts& texts) {
                checks.push_back(textOf(texts));
                return !refusesToSend;
            },
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
            [this](Transaction transaction, std::span<const CStringView> keys,
                   ReceivedStrings& read) {
                if (!record("parm_get", textOf(transaction) + textOf(keys)))
                    return false;
                std::vector<std::string> texts;
                for (const auto& key : keys) {
                    const auto value = values.find(key.c_str());
                    texts.push_back(value != values.end() ? value->second : "?");
                }
                read = receivedStrings(std::move(texts));
                return true;
            },
        .parm_set =
            [this](Transaction transaction, std::span<const KeyValue> pairs) {
                return record("parm_set", textOf(transaction) + textOf(pairs));
            },
        .parm_set_status =
            [this](Transaction transaction, std::span<const KeyValue> pairs) {
                return record("parm_set_status", textOf(transaction) + textOf(pairs));
            },
        .parm_reset =
            [this](Transaction transaction, std::span<const CStringView> keys) {
                return record("parm_reset", textOf(transaction) + textOf(keys));
            },
        .parm_reset_status =
            [this](Transaction transaction, std::span<const CStringView> keys) {
                return record("parm_reset_status", textOf(transaction) + textOf(keys));
            },
        .parm_commit =
            [this](Transaction transaction) { return record("parm_commit", textOf(transaction)); },
    };
}

bool ParameterRecorder::record(const std::string& operation, const std::string& arguments) {
    const bool refuses = refusals[operation]-- > 0;
    calls.push_back(operation + arguments + (refuses ? " refused" : ""));
    return !refuses;
}

} // namespace morvane::test
