// The records of the expression language of conditions and computed values: tokens, expressions,
// and the operands of an evaluation. Tokens borrow their texts from the text of the definition
// file.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// What a token is. Operators come first, in the order in which their operations are dispatched;
/// each of them takes two operands.
enum class TokenType : std::int32_t {
    TOKEN_LPAREN = -3,
    TOKEN_RPAREN = -2,
    OP_OR = 0,
    OP_AND = 1,
    OP_BITOR = 2,
    OP_BITXOR = 3,
    OP_BITAND = 4,
    OP_EQ = 5,
    OP_NE = 6,
    OP_LT = 7,
    OP_GT = 8,
    OP_LE = 9,
    OP_GE = 10,
    OP_SHL = 11,
    OP_SHR = 12,
    OP_ADD = 13,
    OP_SUB = 14,
    OP_MUL = 15,
    OP_DIV = 16,
    OP_MOD = 17,
    OP_CONTAINS = 18,
    TOKEN_NUMBER = 19,
    TOKEN_STRING = 20,
    TOKEN_NAME = 21,
};

constexpr bool isOperator(TokenType type) {
    return type >= TokenType::OP_OR && type <= TokenType::OP_CONTAINS;
}

constexpr bool isOperand(TokenType type) {
    return type >= TokenType::TOKEN_NUMBER;
}

struct Token {
    std::uint32_t line = 0;   ///< counted from 1
    std::uint32_t column = 0; ///< byte offset in the line, counted from 0
    TokenType type = TokenType::TOKEN_NUMBER;
    std::int32_t number = 0; ///< of a TOKEN_NUMBER
    std::string_view text;   ///< of a TOKEN_STRING or a TOKEN_NAME

    bool operator==(const Token&) const = default;
};

using TokenList = std::vector<Token>;

/// Tokens in source order.
struct Expression {
    TokenList tokens;

    bool empty() const { return tokens.empty(); }

    /// Hands over the tokens, without memory to spare, and keeps its own for the next ones.
    Expression take() {
        Expression taken{tokens};
        tokens.clear();
        return taken;
    }

    /// Forgets the tokens and keeps the memory for the next ones.
    void drop() { tokens.clear(); }
};

/// The value of an operand during an evaluation.
struct ExprValue {
    enum class Type : std::int32_t {
        invalid = -1,
        number = static_cast<std::int32_t>(TokenType::TOKEN_NUMBER),
        string = static_cast<std::int32_t>(TokenType::TOKEN_STRING),
        name = static_cast<std::int32_t>(TokenType::TOKEN_NAME), ///< not resolved yet
    };

    Type type = Type::invalid;
    std::int32_t number = 0;
    std::string text;

    bool operator==(const ExprValue&) const = default;
};

/// The names that an expression may refer to, with their value texts.
using NameTable = std::map<std::string, std::string, std::less<>>;

} // namespace morvane
