#include "tables/condition.h"

#include "paramdef/evaluator.h"
#include "paramdef/system_parameter.h"

#include <algorithm>

namespace morvane {

bool namesParameter(const Expression& condition, const SystemParameterTable& parameters) {
    return std::any_of(condition.tokens.begin(), condition.tokens.end(), [&](const Token& token) {
        return token.type == TokenType::TOKEN_NAME && parameters.find(token.text) != nullptr;
    });
}

bool conditionHolds(const Expression& condition, const SystemParameterTable& parameters,
                    const SystemArguments& arguments) {
    return condition.empty() || namesParameter(condition, parameters) ||
           evaluate(condition, arguments);
}

bool conditionsHold(const std::vector<Expression>& conditions,
                    const SystemParameterTable& parameters, const SystemArguments& arguments) {
    return std::all_of(conditions.begin(), conditions.end(), [&](const Expression& condition) {
        return conditionHolds(condition, parameters, arguments);
    });
}

} // namespace morvane
