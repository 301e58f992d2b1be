#include "fault_script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>
#include <utility>

namespace morvane::sim {

namespace {

using Action = Fault::Action;

constexpr const char* anyMethod = "*";

enum class Takes {
    nothing,
    text,
    milliseconds,
    optionalMilliseconds
};

struct ActionWord {
    std::string_view word;
    Action action;
    Takes takes;
};

constexpr std::array actionWords{
    ActionWord{"error", Action::error, Takes::text},
    ActionWord{"delay", Action::delay, Takes::milliseconds},
    ActionWord{"no-reply", Action::noReply, Takes::nothing},
    ActionWord{"drop-name", Action::dropName, Takes::optionalMilliseconds},
    ActionWord{"exit", Action::exit, Takes::nothing},
    ActionWord{"fewer-values", Action::fewerValues, Takes::nothing},
    ActionWord{"more-values", Action::moreValues, Takes::nothing},
    ActionWord{"wrong-type", Action::wrongType, Takes::nothing},
};

template <typename Number>
std::optional<Number> parseCount(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

bool readCallRange(std::string_view word, Fault& fault) {
    if (word == "always")
        return true;
    const auto dash = word.find('-');
    const auto first = parseCount<std::uint64_t>(word.substr(0, dash));
    const auto last =
        dash == std::string_view::npos ? first : parseCount<std::uint64_t>(word.substr(dash + 1));
    if (!first || !last || *first == 0 || *last < *first)
        return false;
    fault.first = *first;
    fault.last = *last;
    return true;
}

// Takes the rest of the line as the argument of the action.
bool readArgument(Takes takes, const std::string& rest, Fault& fault) {
    switch (takes) {
    case Takes::nothing:
        return rest.empty();
    case Takes::text:
        fault.text = rest;
        return !rest.empty();
    case Takes::milliseconds:
    case Takes::optionalMilliseconds:
        fault.milliseconds = parseCount<std::uint32_t>(rest);
        return fault.milliseconds || (rest.empty() && takes == Takes::optionalMilliseconds);
    }
    return false;
}

std::optional<Fault> readFault(const std::string& line) {
    std::istringstream words(line);
    Fault fault;
    std::string when;
    std::string actionWord;
    if (!(words >> fault.method >> when >> actionWord) || !readCallRange(when, fault))
        return std::nullopt;
    const auto* const row =
        std::find_if(actionWords.begin(), actionWords.end(),
                     [&](const ActionWord& candidate) { return candidate.word == actionWord; });
    std::string rest;
    std::getline(words >> std::ws, rest);
    if (row == actionWords.end() || !readArgument(row->takes, rest, fault))
        return std::nullopt;
    fault.action = row->action;
    return fault;
}

bool isBlankOrComment(const std::string& line) {
    const auto first = line.find_first_not_of(" \t\r");
    return first == std::string::npos || line[first] == '#';
}

} // namespace

std::optional<std::string>
FaultScript::read(std::istream& script, const std::function<bool(std::string_view)>& isMethod) {
    std::string line;
    for (unsigned number = 1; std::getline(script, line); ++number) {
        if (isBlankOrComment(line))
            continue;
        auto fault = readFault(line);
        if (!fault)
            return "line " + std::to_string(number) + " is no fault: " + line;
        if (fault->method != anyMethod && !isMethod(fault->method))
            return "line " + std::to_string(number) + ": there is no method " + fault->method;
        faults_.push_back(std::move(*fault));
    }
    return std::nullopt;
}

const Fault* FaultScript::next(const std::string& method) {
    const auto callOfMethod = ++calls_[method];
    const auto callOfAny = ++calls_[anyMethod];
    const auto fits = [&](const Fault& fault) {
        const auto call = fault.method == anyMethod ? callOfAny : callOfMethod;
        return (fault.method == anyMethod || fault.method == method) && fault.first <= call &&
               call <= fault.last;
    };
    const auto found = std::find_if(faults_.begin(), faults_.end(), fits);
    return found == faults_.end() ? nullptr : &*found;
}

} // namespace morvane::sim
