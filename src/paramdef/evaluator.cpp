#include "paramdef/evaluator.h"

#include "paramdef/postfix.h"
#include "text/number.h"

#include <cassert>
#include <compare>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace morvane {

namespace {

using Type = ExprValue::Type;

ExprValue numberValue(std::int32_t number) {
    return {.type = Type::number, .number = number, .text = {}};
}

ExprValue operandValue(const Token& token) {
    return {.type = static_cast<Type>(token.type),
            .number = token.number,
            .text = std::string(token.text)};
}

// Replaces a name with its value.
// Returns whether the operand can be used: false for a name without a value.
bool resolve(ExprValue& operand, const NameTable& names) {
    if (operand.type != Type::name)
        return operand.type != Type::invalid;
    const auto found = names.find(operand.text);
    if (found == names.end())
        return false;
    if (const auto number = wholeNumber(found->second))
        operand = numberValue(*number);
    else
        operand = {.type = Type::string, .number = 0, .text = found->second};
    return true;
}

std::int32_t toInteger(const ExprValue& value) {
    return value.type == Type::number ? value.number : numberPrefix(value.text).value;
}

void makeText(ExprValue& value) {
    if (value.type == Type::number)
        value = {.type = Type::string, .number = 0, .text = decimalText(value.number)};
}

// Two numbers stay numbers; anything else is compared and joined as text.
bool pairAsNumbers(ExprValue& left, ExprValue& right) {
    if (left.type == Type::number && right.type == Type::number)
        return true;
    makeText(left);
    makeText(right);
    return false;
}

std::strong_ordering compare(ExprValue& left, ExprValue& right) {
    if (pairAsNumbers(left, right))
        return left.number <=> right.number;
    return left.text <=> right.text;
}

void add(ExprValue& left, ExprValue& right) {
    if (pairAsNumbers(left, right))
        left.number = static_cast<std::int32_t>(static_cast<std::uint32_t>(left.number) +
                                                static_cast<std::uint32_t>(right.number));
    else
        left.text += right.text;
}

bool contains(ExprValue& left, ExprValue& right) {
    makeText(left);
    makeText(right);
    return left.text.find(right.text) != std::string::npos;
}

// Unsigned arithmetic wraps around where signed arithmetic would be undefined.
std::int32_t wrapped(std::uint32_t value) {
    return static_cast<std::int32_t>(value);
}

constexpr std::uint32_t bitsInNumber = 32;

// Only the low byte of a shift count matters: 256 shifts by 0.
std::uint32_t shiftCount(std::int32_t count) {
    return static_cast<std::uint32_t>(count) % 256U;
}

std::int32_t shiftLeft(std::int32_t value, std::int32_t count) {
    const auto bits = shiftCount(count);
    return bits < bitsInNumber ? wrapped(static_cast<std::uint32_t>(value) << bits) : 0;
}

std::int32_t shiftRight(std::int32_t value, std::int32_t count) {
    const auto bits = shiftCount(count);
    if (bits < bitsInNumber)
        return value >> bits;
    return value < 0 ? -1 : 0;
}

// A zero divisor has no result. The smallest number divided by -1 wraps around to itself.
std::optional<std::int32_t> divide(std::int32_t dividend, std::int32_t divisor) {
    if (divisor == 0)
        return std::nullopt;
    return static_cast<std::int32_t>(std::int64_t{dividend} / divisor);
}

std::optional<std::int32_t> remainder(std::int32_t dividend, std::int32_t divisor) {
    if (divisor == 0)
        return std::nullopt;
    return static_cast<std::int32_t>(std::int64_t{dividend} % divisor);
}

// The operators that take both operands as integers.
std::optional<std::int32_t> integerOperation(TokenType op, std::int32_t left, std::int32_t right) {
    const auto l = static_cast<std::uint32_t>(left);
    const auto r = static_cast<std::uint32_t>(right);
    switch (op) {
    case TokenType::OP_OR:
        return left != 0 || right != 0 ? 1 : 0;
    case TokenType::OP_AND:
        return left != 0 && right != 0 ? 1 : 0;
    case TokenType::OP_BITOR:
        return wrapped(l | r);
    case TokenType::OP_BITXOR:
        return wrapped(l ^ r);
    case TokenType::OP_BITAND:
        return wrapped(l & r);
    case TokenType::OP_SHL:
        return shiftLeft(left, right);
    case TokenType::OP_SHR:
        return shiftRight(left, right);
    case TokenType::OP_SUB:
        return wrapped(l - r);
    case TokenType::OP_MUL:
        return wrapped(l * r);
    case TokenType::OP_DIV:
        return divide(left, right);
    case TokenType::OP_MOD:
        return remainder(left, right);
    default:
        assert(false);
        return std::nullopt;
    }
}

// Computes `left` op `right` into `left`. Both are numbers or strings.
bool compute(TokenType op, ExprValue& left, ExprValue& right) {
    switch (op) {
    case TokenType::OP_EQ:
        left = numberValue(compare(left, right) == 0 ? 1 : 0);
        return true;
    case TokenType::OP_NE:
        left = numberValue(compare(left, right) != 0 ? 1 : 0);
        return true;
    case TokenType::OP_LT:
        left = numberValue(compare(left, right) < 0 ? 1 : 0);
        return true;
    case TokenType::OP_GT:
        left = numberValue(compare(left, right) > 0 ? 1 : 0);
        return true;
    case TokenType::OP_LE:
        left = numberValue(compare(left, right) <= 0 ? 1 : 0);
        return true;
    case TokenType::OP_GE:
        left = numberValue(compare(left, right) >= 0 ? 1 : 0);
        return true;
    case TokenType::OP_ADD:
        add(left, right);
        return true;
    case TokenType::OP_CONTAINS:
        left = numberValue(contains(left, right) ? 1 : 0);
        return true;
    default:
        const auto number = integerOperation(op, toInteger(left), toInteger(right));
        if (number)
            left = numberValue(*number);
        return number.has_value();
    }
}

// Both operands of an operator are always computed, so an operand that cannot be used makes "||"
// and "&&" fail even where the other one would decide.
std::optional<ExprValue> computeValue(const TokenList& postfix, const NameTable& names) {
    std::vector<ExprValue> values;
    for (const auto& token : postfix) {
        if (isOperand(token.type)) {
            values.push_back(operandValue(token));
            continue;
        }
        if (!isOperator(token.type) || values.size() < 2)
            return std::nullopt;
        auto right = std::move(values.back());
        values.pop_back();
        auto& left = values.back();
        if (!resolve(left, names) || !resolve(right, names) || !compute(token.type, left, right))
            return std::nullopt;
    }
    if (values.size() != 1 || !resolve(values.back(), names))
        return std::nullopt;
    return std::move(values.back());
}

bool isTrue(const ExprValue& value) {
    return value.type == Type::number ? value.number != 0 : !value.text.empty();
}

} // namespace

bool evaluatePostfix(const TokenList& postfix, const NameTable& names, ExprValue* result) {
    auto value = computeValue(postfix, names);
    const bool truth = value && isTrue(*value);
    if (result != nullptr)
        *result = value ? std::move(*value) : ExprValue{};
    return truth;
}

bool evaluate(const Expression& expression, const NameTable& names, ExprValue* result) {
    TokenList postfix;
    convertToPostfix(expression, postfix); // leaves an empty list, which has no value, if it fails
    return evaluatePostfix(postfix, names, result);
}

} // namespace morvane
