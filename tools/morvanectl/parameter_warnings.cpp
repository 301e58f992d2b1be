// Warnings about the parameter definition file.

#include "condition_text.h"
#include "paramdef/evaluator.h"
#include "tables/valid_values.h"
#include "text/number.h"
#include "warnings.h"

#include <algorithm>

namespace morvane::ctl {

namespace {

std::string valueText(const ExprValue& value) {
    return value.type == ExprValue::Type::number ? decimalText(value.number) : value.text;
}

/// Collects the warnings about one parameter.
class ParameterCheck {
public:
    ParameterCheck(const SystemParameter& parameter, const SystemParameterTable& parameters,
                   const SystemArguments& arguments, std::vector<Warning>& warnings)
        : parameter_(parameter),
          parameters_(parameters),
          arguments_(arguments),
          warnings_(warnings) {}

    void check() {
        for (const auto& condition : parameter_.ctrlValid)
            checkCondition(condition);
        if (!conditionsHold(parameter_.ctrlValid, parameters_, arguments_))
            return;
        for (const auto& condition : parameter_.ctrlRO)
            checkStructure(condition);
        for (const auto& range : parameter_.rangeValid)
            checkRange(range);
        if (parameter_.access == AccessType::ACCESS_INDEX)
            checkIndex();
        for (const auto& dimension : parameter_.indices)
            checkDimension(dimension);
        for (const auto& chosen : parameter_.defaults)
            checkDefault(chosen);
    }

private:
    void add(std::uint32_t line, const std::string& word, const std::string& text) {
        warnings_.push_back({Warning::File::parameters, line, word, text, {}});
    }

    void addAt(const TokenList& tokens, const std::string& text) {
        const auto& first = tokens.front();
        warnings_.push_back({Warning::File::parameters, first.line, {}, text, first.column});
    }

    std::string seen(const Expression& expression) const {
        std::string text;
        for (const auto& value : valuesSeen(expression, parameters_, arguments_))
            text += (text.empty() ? " (" : ", ") + value;
        return text.empty() ? text : text + ")";
    }

    void checkStructure(const Expression& condition) {
        if (!condition.empty() && !hasStructure(condition))
            addAt(condition.tokens, "the condition (" + textOf(condition, parameters_.text()) +
                                        ") has a bad structure and never holds");
    }

    void checkCondition(const Expression& condition) {
        const auto verdict = judge(condition, parameters_, arguments_);
        if (verdict == Verdict::assumedMet && !hasStructure(condition))
            addAt(condition.tokens, "the condition (" + textOf(condition, parameters_.text()) +
                                        ") has a bad structure, but counts as met because it names "
                                        "a parameter");
        if (verdict != Verdict::unusable)
            return;
        if (hasStructure(condition))
            addAt(condition.tokens, "the condition (" + textOf(condition, parameters_.text()) +
                                        ") cannot be evaluated and does not hold" +
                                        seen(condition));
        else
            checkStructure(condition);
    }

    bool isComputable(const TokenList& tokens) const {
        ExprValue value;
        evaluate(Expression{tokens}, arguments_, &value);
        return value.type != ExprValue::Type::invalid;
    }

    void checkRange(const RangeSpec& range) {
        checkCondition(range.condition);
        if (!conditionHolds(range.condition, parameters_, arguments_))
            return;
        for (const auto& [low, high] : range.items) {
            for (const auto* const bound : {&low, &high}) {
                if (!bound->empty() && !isComputable(*bound))
                    addAt(*bound, "a value of " + name_ + " cannot be computed and is left out" +
                                      seen(Expression{*bound}));
            }
        }
    }

    void checkIndex() {
        const auto values = validValues(parameter_, parameters_, arguments_);
        const bool hasValue = std::any_of(values.begin(), values.end(), [](const auto& value) {
            const auto* const span = std::get_if<NumberSpan>(&value);
            return span == nullptr || span->low <= span->high;
        });
        if (!hasValue)
            add(parameter_.line, name_,
                "index " + name_ + " has no value, so parameters that have it have no key");
    }

    void checkDimension(const IndexDimension& dimension) {
        const std::string name(dimension.indexName());
        const auto* const index = parameters_.find(name);
        if (index == nullptr || index->access != AccessType::ACCESS_INDEX)
            add(dimension.names.front().line, name,
                "there is no index " + name + ", so " + name_ + " has no key");
    }

    void checkDefault(const DefaultSpec& chosen) {
        checkCondition(chosen.condition);
        if (chosen.value.empty() || !conditionHolds(chosen.condition, parameters_, arguments_))
            return;
        ExprValue value;
        evaluate(chosen.value, arguments_, &value);
        if (value.type == ExprValue::Type::invalid) {
            addAt(chosen.value.tokens,
                  "the default of " + name_ + " cannot be computed" + seen(chosen.value));
            return;
        }
        const auto accepted = acceptedValues(parameter_, parameters_, arguments_);
        if (!accepted.values.empty() && !accepted.accepts(valueText(value)))
            addAt(chosen.value.tokens,
                  "the default " + valueText(value) + " of " + name_ + " is none of its values");
    }

    const SystemParameter& parameter_;
    const std::string name_{parameter_.name};
    const SystemParameterTable& parameters_;
    const SystemArguments& arguments_;
    std::vector<Warning>& warnings_;
};

} // namespace

std::vector<Warning> parameterWarnings(const SystemParameterTable& parameters,
                                       const SystemArguments& arguments) {
    std::vector<Warning> warnings;
    for (const auto& [name, parameter] : parameters)
        ParameterCheck(parameter, parameters, arguments, warnings).check();
    return warnings;
}

} // namespace morvane::ctl
