#include "condition_text.h"

#include "paramdef/evaluator.h"
#include "paramdef/expression_tokenizer.h"
#include "paramdef/postfix.h"
#include "text/cursor.h"
#include "text/source_text.h"

#include <algorithm>
#include <array>

namespace morvane::ctl {

namespace {

bool canBeEvaluated(const Expression& condition, const NameTable& names) {
    ExprValue value;
    evaluate(condition, names, &value);
    return value.type != ExprValue::Type::invalid;
}

constexpr std::array accessKeywords{"index", "ro", "rostrict", "wo", "rw"}; // by their codes

} // namespace

const char* keywordOf(AccessType access) {
    return accessKeywords.at(static_cast<std::size_t>(access));
}

Verdict judge(const Expression& condition, const SystemParameterTable& parameters,
              const SystemArguments& arguments) {
    if (condition.empty())
        return Verdict::holds;
    if (namesParameter(condition, parameters))
        return Verdict::assumedMet; // without being evaluated: its structure does not matter
    if (conditionHolds(condition, parameters, arguments))
        return Verdict::holds;
    return canBeEvaluated(condition, arguments) ? Verdict::fails : Verdict::unusable;
}

bool hasStructure(const Expression& condition) {
    TokenList postfix;
    return convertToPostfix(condition, postfix) == 0 && !postfix.empty();
}

// The tokenizer itself finds the end, skipping the comments between lines as its caller does.
std::string textOf(const Expression& condition, const SourceText& source) {
    std::string text;
    if (condition.empty())
        return text;
    const auto& first = condition.tokens.front();
    SourceText composed;
    ExpressionTokenizer tokenizer;
    Expression unused;
    auto result = ParamDefResult::incomplete;
    for (auto number = first.line; result == ParamDefResult::incomplete; ++number) {
        const auto line = source.line(number);
        if (!line)
            break;
        Cursor cursor({*line, number, &composed});
        cursor.advance(number == first.line ? first.column : 0);
        if (!cursor.skipSpace() || (number != first.line && cursor.sees('#')))
            continue;
        const auto begin = cursor.column();
        result = tokenizer.parse(cursor, unused);
        const auto end = result == ParamDefResult::ok ? cursor.tokenColumn() : cursor.column();
        const auto part = trimSpace(line->substr(begin, end - begin));
        text.append(text.empty() || part.empty() ? "" : " ").append(part);
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

std::string outcomeOf(const char* attribute, const Expression& condition,
                      const SystemParameterTable& parameters, const SystemArguments& arguments) {
    std::string seen;
    for (const auto& value : valuesSeen(condition, parameters, arguments))
        seen += (seen.empty() ? " (" : ", ") + value;
    seen += seen.empty() ? "" : ")";
    const auto verdict = judge(condition, parameters, arguments);
    const char* const text = verdict == Verdict::holds        ? " holds"
                             : verdict == Verdict::assumedMet ? " counts as met"
                             : verdict == Verdict::fails
                                 ? " does not hold"
                                 : " cannot be evaluated, so it does not hold";
    return std::string(attribute) + " (" + textOf(condition, parameters.text()) + ")" + text + seen;
}

} // namespace morvane::ctl
