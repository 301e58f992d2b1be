#include "device.h"

#include "paramdef/evaluator.h"
#include "tables/condition.h"
#include "tables/preset_keys.h"
#include "text/number.h"

#include <array>
#include <utility>
#include <vector>

namespace morvane::sim {

namespace {

// A parameter without a default starts at the first of its valid values. It never starts empty:
// an empty value would end every preset file that it is stored in.
std::string firstValue(const std::vector<ValidValue>& valid) {
    constexpr const char* nothingValid = "0";
    if (valid.empty())
        return nothingValid;
    if (const auto* const text = std::get_if<std::string>(&valid.front()))
        return *text;
    return decimalText(std::get<NumberSpan>(valid.front()).low);
}

// Of several defaults, the first whose condition holds.
std::string defaultValue(const SystemParameter& parameter, const std::vector<ValidValue>& valid,
                         const SystemParameterTable& parameters, const SystemArguments& arguments) {
    for (const auto& candidate : parameter.defaults) {
        ExprValue value;
        if (!conditionHolds(candidate.condition, parameters, arguments))
            continue;
        evaluate(candidate.value, arguments, &value);
        if (value.type == ExprValue::Type::number)
            return decimalText(value.number);
        if (value.type == ExprValue::Type::string)
            return value.text;
    }
    return firstValue(valid);
}

} // namespace

Device::Device(const SystemParameterTable& parameters, const SystemArguments& arguments) {
    constexpr std::array selectors{AccessSelector::readOnly, AccessSelector::writeOnly,
                                   AccessSelector::readWrite};
    const auto indices = PresetGenerate::indexTable(parameters, arguments);
    for (const auto selector : selectors) {
        const auto map = PresetGenerate::parameterMap(parameters, arguments, selector);
        for (std::size_t place = 0; place < map.size(); ++place) {
            const auto name = map.name(place);
            const auto& definition = *parameters.find(name);
            auto accepted = acceptedValues(definition, parameters, arguments);
            auto start = defaultValue(definition, accepted.values, parameters, arguments);
            parameters_.push_back({definition.access, std::move(accepted), std::move(start)});
            for (const auto key :
                 PresetGenerate::parameterKeys(indices, name, map.indexNames(place)))
                keys_.emplace(key.view(), &parameters_.back());
        }
    }
}

const DeviceParameter* Device::find(const std::string& key) const {
    const auto found = keys_.find(key);
    return found == keys_.end() ? nullptr : found->second;
}

} // namespace morvane::sim
