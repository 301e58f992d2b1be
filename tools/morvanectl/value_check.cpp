#include "value_check.h"

#include "condition_text.h"
#include "output.h"
#include "tables/condition.h"
#include "text/number.h"
#include "text/utf8.h"

#include <algorithm>
#include <cassert>

namespace morvane::ctl {

namespace {

std::string quoted(std::string_view value) {
    constexpr std::size_t most = 60;
    return "\"" + printableText(value.substr(0, most)) + (value.size() > most ? "...\"" : "\"");
}

} // namespace

std::string textOf(const ValidValue& item) {
    if (const auto* const text = std::get_if<std::string>(&item))
        return "\"" + *text + "\"";
    const auto& [low, high] = std::get<NumberSpan>(item);
    return decimalText(low) + (low == high ? "" : ".." + decimalText(high));
}

std::string textOf(const std::vector<ValidValue>& items) {
    std::vector<std::string> texts;
    texts.reserve(items.size());
    for (const auto& item : items)
        texts.push_back(textOf(item));
    return items.empty() ? "it has none on this variant" : shortList(texts);
}

ValueVerdict ValueCheck::check(std::string_view name, std::string_view value) {
    const auto* const parameter = parameters_.find(name);
    assert(parameter != nullptr);
    auto why = whyUnknown(*parameter, value);
    if (!why.empty())
        return {ValueVerdict::Kind::unknown,
                "whether " + quoted(value) + " is one of its values is not known: " + why};
    const auto& accepted = acceptedBy(*parameter);
    if (accepted.accepts(value))
        return {};
    return {ValueVerdict::Kind::refused,
            quoted(value) + " is none of its values: " + textOf(accepted.values)};
}

const AcceptedValues& ValueCheck::acceptedBy(const SystemParameter& parameter) {
    const auto found = accepted_.find(parameter.name);
    if (found != accepted_.end())
        return found->second;
    return accepted_.emplace(parameter.name, acceptedValues(parameter, parameters_, arguments_))
        .first->second;
}

// A value that a decided range has is accepted. One that only other ranges may have depends on the
// parameters that their conditions or bounds name. Empty if the ranges decide.
std::string ValueCheck::whyUnknown(const SystemParameter& parameter, std::string_view value) const {
    std::string why;
    for (const auto& range : parameter.rangeValid) {
        if (!conditionHolds(range.condition, parameters_, arguments_))
            continue;
        const bool isAssumed = namesParameter(range.condition, parameters_);
        const bool has = std::any_of(range.items.begin(), range.items.end(), [&](const auto& item) {
            const auto stands = itemValue(item, arguments_);
            return stands && standsFor(*stands, value);
        });
        if (has && !isAssumed)
            return {};
        if (has)
            why = "(" + ctl::textOf(range.condition, parameters_.text()) +
                  ") counts as met because it names a parameter";
        else if (why.empty() && hasOpenItem(range, parameters_, arguments_))
            why = "a bound names a parameter, whose value is not known yet";
    }
    return why;
}

bool hasOpenItem(const RangeSpec& range, const SystemParameterTable& parameters,
                 const SystemArguments& arguments) {
    return std::any_of(range.items.begin(), range.items.end(), [&](const RangeItem& item) {
        return !itemValue(item, arguments) && (namesParameter(Expression{item.low}, parameters) ||
                                               namesParameter(Expression{item.high}, parameters));
    });
}

} // namespace morvane::ctl
