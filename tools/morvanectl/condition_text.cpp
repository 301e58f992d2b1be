#include "condition_text.h"

#include "paramdef/evaluator.h"
#include "text/cursor.h"

#include <algorithm>

namespace morvane::ctl {

namespace {

bool canBeEvaluated(const Expression& condition, const NameTable& names) {
    ExprValue value;
    evaluate(condition, names, &value);
    return value.type != ExprValue::Type::invalid;
}

// The length of a token that begins here, as it was written.
std::size_t lengthOf(const Token& token, std::string_view text) {
    constexpr std::string_view operators = "|&^=!<>+-*/%$";
    if (token.type == TokenType::TOKEN_STRING)
        return std::min(text.find('"', 1), text.size() - 1) + 1;
    if (token.type == TokenType::TOKEN_LPAREN || token.type == TokenType::TOKEN_RPAREN)
        return 1;
    if (isOperator(token.type))
        return std::min(text.find_first_not_of(operators), text.size());
    return Cursor({text, token.line}).word("(){},\"|&^=!<>+*/%$").size();
}

} // namespace

Verdict judge(const Expression& condition, const SystemParameterTable& parameters,
              const SystemArguments& arguments) {
    if (condition.empty())
        return Verdict::holds;
    if (namesParameter(condition, parameters))
        return hasStructure(condition) ? Verdict::assumedMet : Verdict::unusable;
    if (conditionHolds(condition, parameters, arguments))
        return Verdict::holds;
    return canBeEvaluated(condition, arguments) ? Verdict::fails : Verdict::unusable;
}

bool hasStructure(const Expression& condition) {
    NameTable names;
    for (const auto& token : condition.tokens) {
        if (token.type == TokenType::TOKEN_NAME)
            names.try_emplace(std::string(token.text), "1");
    }
    return canBeEvaluated(condition, names);
}

std::string textOf(const Expression& condition, const SourceText& source) {
    std::string text;
    const auto& tokens = condition.tokens;
    std::size_t end = 0; // of the token before, on its line
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const auto& token = tokens[i];
        const auto line = source.line(token.line).value_or("");
        const bool isNewLine = i == 0 || tokens[i - 1].line != token.line;
        if (i > 0 && (isNewLine || token.column > end))
            text += ' ';
        const auto length = lengthOf(token, line.substr(token.column));
        text += line.substr(token.column, length);
        end = token.column + length;
    }
    return text;
}

std::vector<std::string> valuesSeen(const Expression& condition,
                                    const SystemParameterTable& parameters,
                                    const SystemArguments& arguments) {
    std::vector<std::string> seen;
    for (const auto& token : condition.tokens) {
        if (token.type != TokenType::TOKEN_NAME)
            continue;
        const auto argument = arguments.find(token.text);
        std::string text(token.text);
        if (parameters.find(token.text) != nullptr)
            text += " is a parameter, whose value is not known yet";
        else if (argument == arguments.end())
            text += " has no value";
        else
            text += " is " + argument->second;
        if (std::find(seen.begin(), seen.end(), text) == seen.end())
            seen.push_back(std::move(text));
    }
    return seen;
}

} // namespace morvane::ctl
