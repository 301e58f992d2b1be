#include "device_keys.h"

#include "paramdef/evaluator.h"
#include "tables/condition.h"
#include "tables/preset_keys.h"
#include "text/number.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace morvane::ctl {

namespace {

/// Asks the definitions about one parameter after the other.
class Definition {
public:
    explicit Definition(const Variant& variant)
        : parameters_(variant.definitions.parameters),
          arguments_(variant.arguments) {}

    // Conditions that make a parameter read-only or absent for a while may be met at any time.
    bool isDecided(const SystemParameter& parameter) const {
        return parameter.ctrlRO.empty() &&
               std::none_of(parameter.ctrlValid.begin(), parameter.ctrlValid.end(),
                            [this](const auto& condition) { return isOpen(condition); }) &&
               std::none_of(parameter.rangeValid.begin(), parameter.rangeValid.end(),
                            [this](const auto& range) { return isOpen(range); });
    }

    AcceptedValues accepted(const SystemParameter& parameter) const {
        return acceptedValues(parameter, parameters_, arguments_);
    }

    // Of several defaults, the first whose condition holds.
    std::optional<std::string> byDefault(const SystemParameter& parameter) const {
        for (const auto& candidate : parameter.defaults) {
            if (!conditionHolds(candidate.condition, parameters_, arguments_))
                continue;
            if (isOpen(candidate.condition))
                return std::nullopt;
            ExprValue value;
            evaluate(candidate.value, arguments_, &value);
            if (value.type == ExprValue::Type::number)
                return decimalText(value.number);
            if (value.type == ExprValue::Type::string)
                return value.text;
        }
        return std::nullopt;
    }

private:
    bool isOpen(const Expression& expression) const {
        return namesParameter(expression, parameters_);
    }

    bool isOpen(const RangeSpec& range) const {
        return isOpen(range.condition) ||
               std::any_of(range.items.begin(), range.items.end(), [this](const auto& item) {
                   return isOpen(Expression{item.low}) || isOpen(Expression{item.high});
               });
    }

    const SystemParameterTable& parameters_;
    const SystemArguments& arguments_;
};

// D-Bus carries nothing but UTF-8; `check` warns of other keys.
std::vector<std::string> sendableKeys(const KeySet& keys) {
    return keys.isUtf8() ? keys.strings() : std::vector<std::string>();
}

std::vector<CheckedParameter> parametersOf(const Variant& variant, const ParameterMap& map) {
    const Definition definition(variant);
    std::vector<CheckedParameter> parameters;
    for (std::size_t place = 0; place < map.size(); ++place) {
        const auto name = map.name(place);
        auto keys = sendableKeys(
            PresetGenerate::parameterKeys(variant.manager.indices(), name, map.indexNames(place)));
        if (keys.empty())
            continue;
        const auto* const found = variant.definitions.parameters.find(name);
        parameters.push_back({found, std::move(keys), definition.isDecided(*found),
                              definition.accepted(*found), definition.byDefault(*found)});
    }
    return parameters;
}

std::optional<std::string> numberBeside(std::int32_t number, const AcceptedValues& accepted) {
    constexpr auto least = std::numeric_limits<std::int32_t>::min();
    constexpr auto most = std::numeric_limits<std::int32_t>::max();
    for (const auto& candidate :
         {number == least ? most : number - 1, number == most ? least : number + 1}) {
        auto text = decimalText(candidate);
        if (accepted.accepts(text))
            return text;
    }
    return std::nullopt;
}

} // namespace

DeviceKeys::DeviceKeys(const Variant& variant)
    : readWrite_(parametersOf(variant, variant.manager.readWrite())),
      readOnly_(parametersOf(variant, variant.manager.readOnly())) {
    while (variant.definitions.parameters.find(unknownKey_) != nullptr)
        unknownKey_ += '_';
}

bool DeviceKeys::hasDefaults(Target target) const {
    const auto& all = parameters(target);
    return std::any_of(all.begin(), all.end(),
                       [](const auto& parameter) { return parameter.byDefault.has_value(); });
}

bool DeviceKeys::hasRanges(Target target) const {
    const auto& all = parameters(target);
    return std::any_of(all.begin(), all.end(),
                       [](const auto& parameter) { return parameter.hasDecidedRange(); });
}

std::vector<std::string> DeviceKeys::keys(Target target) const {
    std::vector<std::string> all;
    for (const auto& parameter : parameters(target))
        all.insert(all.end(), parameter.keys.begin(), parameter.keys.end());
    return all;
}

std::optional<std::string> otherValue(const CheckedParameter& parameter, const std::string& value) {
    const auto number = value.empty() ? std::nullopt : wholeNumber(value);
    if (number) {
        if (auto beside = numberBeside(*number, parameter.accepted))
            return beside;
    }
    for (auto& candidate : endsOfRanges(parameter)) {
        if (!candidate.empty() && !isSameValue(candidate, value))
            return std::move(candidate);
    }
    return parameter.accepted.isRanged ? std::nullopt : std::optional(value + "x");
}

std::optional<std::string> invalidValue(const CheckedParameter& parameter) {
    if (!parameter.accepted.isRanged)
        return std::nullopt;
    for (const auto& item : parameter.accepted.values) {
        const auto* const span = std::get_if<NumberSpan>(&item);
        if (span == nullptr)
            continue;
        for (const auto candidate : {std::int64_t{span->high} + 1, std::int64_t{span->low} - 1}) {
            auto text = std::to_string(candidate);
            const bool isNumber = candidate == std::int64_t{static_cast<std::int32_t>(candidate)};
            if (isNumber && !parameter.accepted.accepts(text))
                return text;
        }
    }
    std::string text = "noSuchValue";
    while (parameter.accepted.accepts(text))
        text += '_';
    return text;
}

std::vector<std::string> endsOfRanges(const CheckedParameter& parameter) {
    std::vector<std::string> ends;
    for (const auto& item : parameter.accepted.values) {
        const auto* const span = std::get_if<NumberSpan>(&item);
        if (span == nullptr) {
            ends.push_back(std::get<std::string>(item));
            continue;
        }
        if (span->low <= span->high)
            ends.push_back(decimalText(span->low));
        if (span->low < span->high)
            ends.push_back(decimalText(span->high));
    }
    return ends;
}

bool isSameValue(const std::string& first, const std::string& second) {
    if (first == second)
        return true;
    const auto one = first.empty() ? std::nullopt : wholeNumber(first);
    const auto another = second.empty() ? std::nullopt : wholeNumber(second);
    return one && another && *one == *another;
}

} // namespace morvane::ctl
