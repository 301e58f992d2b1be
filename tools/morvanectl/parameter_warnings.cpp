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
                   const SystemArguments& arguments, WarningList& warnings)
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
        else
            checkRanges();
        for (const auto& dimension : parameter_.indices)
            checkDimension(dimension);
        checkDefaults();
    }

private:
    static SourceText::Place placeOf(const TokenList& tokens) {
        return {tokens.front().line, tokens.front().column};
    }

    // A name without a value is warned of by itself, unless another variant gives it one.
    void addUncomputable(const TokenList& tokens, std::string_view code, std::string text) {
        const bool lacksValue = std::any_of(tokens.begin(), tokens.end(), [&](const Token& token) {
            return token.type == TokenType::TOKEN_NAME && !arguments_.contains(token.text) &&
                   parameters_.find(token.text) == nullptr;
        });
        if (!lacksValue)
            warnings_.add(placeOf(tokens), code, std::move(text));
    }

    std::string seen(const Expression& expression) const {
        std::string text;
        for (const auto& value : valuesSeen(expression, parameters_, arguments_))
            text += (text.empty() ? " (" : ", ") + value;
        return text.empty() ? text : text + ")";
    }

    void checkStructure(const Expression& condition) {
        if (!condition.empty() && !hasStructure(condition))
            warnings_.add(placeOf(condition.tokens), "bad-structure",
                          quoted(condition) + " has a bad structure and never holds");
    }

    void checkCondition(const Expression& condition) {
        const auto verdict = judge(condition, parameters_, arguments_);
        if (verdict == Verdict::assumedMet && !hasStructure(condition))
            warnings_.add(placeOf(condition.tokens), "bad-structure",
                          quoted(condition) +
                              " has a bad structure, but counts as met because it names a "
                              "parameter");
        if (verdict != Verdict::unusable)
            return;
        if (hasStructure(condition))
            addUncomputable(condition.tokens, "not-evaluated",
                            quoted(condition) + " cannot be evaluated and does not hold" +
                                seen(condition));
        else
            checkStructure(condition);
    }

    std::string quoted(const Expression& condition) const {
        return "the condition (" + textOf(condition, parameters_.text()) + ")";
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
                    addUncomputable(*bound, "not-computed",
                                    "a value of " + name_ + " cannot be computed and is left out" +
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
            warnings_.addAbsence(parameter_.name, "empty-index",
                                 "index " + name_ +
                                     " has no value, so parameters that have it have no key");
    }

    void checkRanges() {
        const auto& ranges = parameter_.rangeValid;
        const bool none = std::none_of(ranges.begin(), ranges.end(), [&](const RangeSpec& range) {
            return conditionHolds(range.condition, parameters_, arguments_);
        });
        if (none && !ranges.empty())
            warnings_.addAbsence(parameter_.name, "no-range",
                                 "the condition of no range of " + name_ +
                                     " holds, so it has no valid value");
    }

    void checkDimension(const IndexDimension& dimension) {
        const std::string name(dimension.indexName());
        const auto* const index = parameters_.find(name);
        if (index == nullptr || index->access != AccessType::ACCESS_INDEX)
            warnings_.add(dimension.indexName(), "undefined-index",
                          "there is no index " + name + ", so " + name_ + " has no key");
    }

    // Behind a default whose condition holds, no other one is ever used.
    void checkDefaults() {
        for (const auto& chosen : parameter_.defaults) {
            checkCondition(chosen.condition);
            checkDefault(chosen);
            if (judge(chosen.condition, parameters_, arguments_) == Verdict::holds)
                return;
        }
    }

    void checkDefault(const DefaultSpec& chosen) {
        if (chosen.value.empty() || !conditionHolds(chosen.condition, parameters_, arguments_))
            return;
        ExprValue value;
        evaluate(chosen.value, arguments_, &value);
        if (value.type == ExprValue::Type::invalid) {
            addUncomputable(chosen.value.tokens, "not-computed",
                            "the default of " + name_ + " cannot be computed" + seen(chosen.value));
            return;
        }
        const auto accepted = acceptedValues(parameter_, parameters_, arguments_);
        if (!accepted.values.empty() && !accepted.accepts(valueText(value)))
            warnings_.add(placeOf(chosen.value.tokens), "bad-default",
                          "the default " + valueText(value) + " of " + name_ +
                              " is none of its values");
    }

    const SystemParameter& parameter_;
    const std::string name_{parameter_.name};
    const SystemParameterTable& parameters_;
    const SystemArguments& arguments_;
    WarningList& warnings_;
};

} // namespace

std::vector<Warning> parameterWarnings(const SystemParameterTable& parameters,
                                       const SystemArguments& arguments) {
    WarningList warnings(Warning::File::parameters, parameters.text());
    for (const auto& [name, parameter] : parameters)
        ParameterCheck(parameter, parameters, arguments, warnings).check();
    return warnings.take();
}

} // namespace morvane::ctl
