// morvanectl get and set: the live values of some keys.

#include "commands.h"
#include "output.h"
#include "parameter_values.h"
#include "text/utf8.h"
#include "transaction.h"

#include <algorithm>
#include <iostream>

namespace morvane::ctl {

namespace {

// D-Bus carries nothing but UTF-8.
ExitStatus refuseOtherThanUtf8(const std::vector<std::string>& words, const Messages& messages) {
    const auto bad =
        std::find_if(words.begin(), words.end(), [](const auto& word) { return !isUtf8(word); });
    return bad == words.end()
               ? ExitStatus::yes
               : messages.fail("keys and values must be UTF-8: " + printableText(*bad));
}

ExitStatus failForKeys(const std::vector<std::string>& keys, const std::string& error,
                       const std::function<std::string(std::size_t)>& callAlone,
                       const Messages& messages) {
    const auto other =
        findRefused(keys, error, callAlone, [&](std::size_t i, const std::string& refusal) {
            messages.fail(printableText(keys[i]) + ": " + refusal);
        });
    return other.empty() ? ExitStatus::error : messages.fail(other);
}

void show(const std::vector<std::string>& keys, const std::vector<std::string>& values,
          const Settings& settings) {
    auto list = Json::array();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (settings.json) {
            list.push_back(valueObject(keys[i], values[i]));
            continue;
        }
        std::cout << valueLine(keys[i], values[i]) << '\n';
        if (printableText(values[i]) != values[i])
            settings.messages.warn("the value of " + printableText(keys[i]) +
                                   " has control characters, shown as \\xNN; --json has it as it "
                                   "is");
    }
    if (settings.json)
        writeJson(list);
}

std::vector<Assignment> assignmentsOf(const std::vector<std::string>& words) {
    std::vector<Assignment> assignments;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2)
        assignments.push_back({words[i], words[i + 1]});
    return assignments;
}

// Sets all values, and commits; the caller ends the transaction.
ExitStatus setAndCommit(Transaction& transaction, Target target,
                        const std::vector<Assignment>& assignments, const Messages& messages) {
    const auto refusal = transaction.set(target, assignments);
    if (transaction.isInterrupted())
        return messages.fail("interrupted before the commit: nothing is set");
    if (!refusal.empty()) {
        std::vector<std::string> keys;
        keys.reserve(assignments.size());
        for (const auto& assignment : assignments)
            keys.push_back(assignment.key);
        const auto setAlone = [&](std::size_t i) {
            return transaction.isInterrupted()
                       ? "interrupted"
                       : transaction.set(target, std::span(assignments).subspan(i, 1));
        };
        return failForKeys(keys, refusal, setAlone, messages);
    }
    const auto error = transaction.commit();
    return error.empty() ? ExitStatus::yes : messages.fail("the commit failed: " + error);
}

} // namespace

ExitStatus getValues(const Settings& settings) {
    const auto& keys = settings.keys;
    const auto& messages = settings.messages;
    if (const auto status = refuseOtherThanUtf8(keys, messages); status != ExitStatus::yes)
        return status;
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty())
        return messages.fail(problem);
    const auto values = readLiveValues(bus, keys);
    if (!values.error.empty())
        return failForKeys(
            keys, values.error, [&](std::size_t i) { return readLiveValues(bus, {keys[i]}).error; },
            messages);
    show(keys, values.texts, settings);
    return ExitStatus::yes;
}

ExitStatus setValues(const Settings& settings) {
    const auto& words = settings.assignments;
    const auto& messages = settings.messages;
    if (words.size() % 2 != 0)
        return messages.fail("set takes pairs of a key and a value; one has no value");
    if (const auto status = refuseOtherThanUtf8(words, messages); status != ExitStatus::yes)
        return status;
    std::string problem;
    const BusClient bus(settings, problem);
    if (!problem.empty())
        return messages.fail(problem);
    Transaction transaction(bus, problem);
    if (!problem.empty())
        return messages.fail(problem);
    const auto target = settings.ofStatus ? Target::status : Target::value;
    const auto status = setAndCommit(transaction, target, assignmentsOf(words), messages);
    const auto error = transaction.end();
    return error.empty() ? status : messages.fail("the end of the transaction failed: " + error);
}

} // namespace morvane::ctl
