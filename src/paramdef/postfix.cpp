#include "paramdef/postfix.h"

#include <array>
#include <cassert>
#include <utility>
#include <vector>

namespace morvane {

namespace {

// How tightly an operator binds, 0 the tightest. "$" binds tighter even than "*", so that a test
// such as `options $ "hd"` needs no parentheses wherever it stands.
int level(TokenType type) {
    constexpr std::array levels{
        10,          // ||
        9,           // &&
        8,           // |
        7,           // ^
        6,           // &
        5,  5,       // == !=
        4,  4, 4, 4, // < > <= >=
        3,  3,       // << >>
        2,  2,       // + -
        1,  1, 1,    // * / %
        0,           // $
    };
    assert(isOperator(type));
    return levels[static_cast<std::size_t>(type)];
}

// Operator-precedence conversion with a count of the operands that are waiting for an operator.
class PostfixConverter {
public:
    explicit PostfixConverter(TokenList& output) : output_(output) {}

    bool add(const Token& token) {
        if (isOperand(token.type)) {
            output_.push_back(token);
            ++operands_;
            return true;
        }
        if (token.type == TokenType::TOKEN_LPAREN) {
            stack_.push_back({&token, std::exchange(operands_, 0)});
            return true;
        }
        if (token.type == TokenType::TOKEN_RPAREN)
            return closeGroup();
        if (!moveOperators(level(token.type)))
            return false;
        stack_.push_back({&token, 0});
        return true;
    }

    bool finish() { return moveOperators(weakest) && stack_.empty() && operands_ == 1; }

private:
    struct Pending {
        const Token* token;         // an operator or a "("
        std::size_t operandsBefore; // what a "(" interrupted
    };
    static constexpr int weakest = 10;

    // Moves the operators that bind at least as tightly as `limit` from the stack to the output,
    // down to the innermost open "(".
    bool moveOperators(int limit) {
        while (!stack_.empty() && isOperator(stack_.back().token->type) &&
               level(stack_.back().token->type) <= limit) {
            if (operands_ < 2)
                return false;
            --operands_;
            output_.push_back(*stack_.back().token);
            stack_.pop_back();
        }
        return true;
    }

    // A group must have come down to exactly one value.
    bool closeGroup() {
        if (!moveOperators(weakest) || stack_.empty() || operands_ != 1)
            return false;
        operands_ = stack_.back().operandsBefore + 1;
        stack_.pop_back();
        return true;
    }

    TokenList& output_;
    std::vector<Pending> stack_;
    std::size_t operands_ = 0;
};

} // namespace

std::size_t convertToPostfix(const Expression& expression, TokenList& postfix) {
    postfix.clear();
    PostfixConverter converter(postfix);
    std::size_t position = 1;
    for (const auto& token : expression.tokens) {
        if (!converter.add(token)) {
            postfix.clear();
            return position;
        }
        ++position;
    }
    if (converter.finish())
        return 0;
    postfix.clear();
    return expression.tokens.size();
}

} // namespace morvane
