#include "tables/valid_values.h"

#include "paramdef/evaluator.h"
#include "paramdef/system_parameter.h"
#include "tables/condition.h"
#include "text/number.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace morvane {

namespace {

ExprValue valueOf(const TokenList& tokens, const SystemArguments& arguments) {
    ExprValue value;
    evaluate(Expression{tokens}, arguments, &value);
    return value;
}

} // namespace

std::optional<ValidValue> itemValue(const RangeItem& item, const SystemArguments& arguments) {
    auto low = valueOf(item.low, arguments);
    if (low.type == ExprValue::Type::string)
        return std::move(low.text);
    if (low.type != ExprValue::Type::number)
        return std::nullopt;
    if (item.high.empty())
        return NumberSpan{low.number, low.number};
    const auto high = valueOf(item.high, arguments);
    if (high.type != ExprValue::Type::number)
        return std::nullopt;
    return NumberSpan{low.number, high.number};
}

bool standsFor(const ValidValue& item, std::string_view value) {
    if (const auto* const text = std::get_if<std::string>(&item))
        return *text == value;
    const auto& [low, high] = std::get<NumberSpan>(item);
    const auto number = value.empty() ? std::nullopt : wholeNumber(value);
    return number && low <= *number && *number <= high;
}

std::vector<ValidValue> validValues(const SystemParameter& parameter,
                                    const SystemParameterTable& parameters,
                                    const SystemArguments& arguments) {
    std::vector<ValidValue> values;
    for (const auto& range : parameter.rangeValid) {
        if (!conditionHolds(range.condition, parameters, arguments))
            continue;
        for (const auto& item : range.items) {
            if (auto value = itemValue(item, arguments))
                values.push_back(std::move(*value));
        }
    }
    return values;
}

bool AcceptedValues::accepts(std::string_view value) const {
    return !isRanged || std::any_of(values.begin(), values.end(), [value](const ValidValue& item) {
        return standsFor(item, value);
    });
}

AcceptedValues acceptedValues(const SystemParameter& parameter,
                              const SystemParameterTable& parameters,
                              const SystemArguments& arguments) {
    return {!parameter.rangeValid.empty(), validValues(parameter, parameters, arguments)};
}

} // namespace morvane
