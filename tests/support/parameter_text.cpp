#include "support/parameter_text.h"

#include <array>
#include <ostream>

namespace morvane::test {

namespace {

// By code, from OP_OR to OP_CONTAINS.
constexpr std::array operators{"||", "&&", "|",  "^", "&", "==", "!=", "<", ">", "<=",
                               ">=", "<<", ">>", "+", "-", "*",  "/",  "%", "$"};

std::string placeOf(std::uint32_t line, std::uint32_t column, Places places) {
    if (places == Places::left)
        return {};
    return "@" + std::to_string(line) + ":" + std::to_string(column);
}

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string symbolOf(const Token& token) {
    switch (token.type) {
    case TokenType::TOKEN_NUMBER:
        return std::to_string(token.number);
    case TokenType::TOKEN_STRING:
        return quoted(token.text);
    case TokenType::TOKEN_NAME:
        return std::string(token.text);
    case TokenType::TOKEN_LPAREN:
        return "(";
    case TokenType::TOKEN_RPAREN:
        return ")";
    default:
        return operators.at(static_cast<std::size_t>(token.type));
    }
}

// The parts with `separator` between them.
template <typename Parts, typename TextOfPart>
std::string joined(const Parts& parts, std::string_view separator, TextOfPart textOfPart) {
    std::string text;
    for (const auto& part : parts)
        text.append(text.empty() ? "" : separator).append(textOfPart(part));
    return text;
}

std::string conditionText(const Expression& condition, Places places) {
    return condition.empty() ? "" : "[" + textOf(condition.tokens, places) + "] ";
}

// "keyword TEXT; " for each attribute.
template <typename Attributes, typename TextOfAttribute>
std::string attributesText(std::string_view keyword, const Attributes& attributes,
                           TextOfAttribute textOfAttribute) {
    std::string text;
    for (const auto& attribute : attributes)
        text.append(" ").append(keyword).append(" ").append(textOfAttribute(attribute)).append(";");
    return text;
}

} // namespace

std::string textOf(const TokenList& tokens, Places places) {
    return joined(tokens, " ", [places](const Token& token) {
        return symbolOf(token) + placeOf(token.line, token.column, places);
    });
}

std::string textOf(const IndexDimension& dimension, Places places) {
    return joined(dimension.names, " ", [places](const IndexName& name) {
        return std::string(name.name) + placeOf(name.line, name.column, places);
    });
}

std::string textOf(const RangeSpec& range, Places places) {
    return conditionText(range.condition, places) + "{ " +
           joined(range.items, ", ",
                  [places](const RangeItem& item) {
                      const auto low = textOf(item.low, places);
                      return item.high.empty() ? low : low + ".." + textOf(item.high, places);
                  }) +
           " }";
}

std::string textOf(const DefaultSpec& defaultSpec, Places places) {
    return conditionText(defaultSpec.condition, places) + "{ " +
           textOf(defaultSpec.value.tokens, places) + " }";
}

std::string textOf(const ValueChange& change, Places places) {
    return quoted(change.from) + placeOf(change.fromLine, change.fromColumn, places) + " -> " +
           quoted(change.to) + placeOf(change.toLine, change.toColumn, places);
}

std::string textOf(const SystemParameter& parameter) {
    const auto text = [](const auto& attribute) { return textOf(attribute); };
    const auto tokens = [](const Expression& expression) { return textOf(expression.tokens); };
    return std::string(parameter.name) + "@" + std::to_string(parameter.line) + " " +
           std::to_string(static_cast<int>(parameter.access)) +
           attributesText("index", parameter.indices, text) +
           attributesText("rangeValid", parameter.rangeValid, text) +
           attributesText("rangeDoc", parameter.rangeDoc, text) +
           attributesText("ctrlRO", parameter.ctrlRO, tokens) +
           attributesText("ctrlValid", parameter.ctrlValid, tokens) +
           attributesText("default", parameter.defaults, text) +
           attributesText("valueChange", parameter.valueChange, text);
}

std::string textOf(const SystemParameterTable& table) {
    return joined(table, "\n", [](const auto& entry) { return textOf(entry.second); });
}

} // namespace morvane::test

namespace morvane {

void PrintTo(ParamDefResult result, std::ostream* out) {
    *out << static_cast<int>(result);
}

} // namespace morvane
