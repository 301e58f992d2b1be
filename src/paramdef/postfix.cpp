#include "paramdef/postfix.h"

#include <array>
#include <cassert>
#include <utility>
#include <vector>

namespace morvane {

namespace {

// The precedence of an operator, 0 the highest. That of "$" is higher even than that of "*", so
// that a test such as `options $ "hd"` needs no parentheses wherever it stands.
int precedence(TokenType type) {
    constexpr std::array precedences{
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
    return precedences[static_cast<std::size_t>(type)];
}

// The shunting-yard algorithm, with a count of the operands that are waiting for an operator.
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
        if (!moveOperators(precedence(token.type)))
            return false;
        stack_.push_back({&token, 0});
        return true;
    }

    bool finish() { return moveOperators(lowestOfAll) && stack_.empty() && operands_ == 1; }

private:
    struct Pending {
        const Token* token;         // an operator or a "("
        std::size_t operandsBefore; // what a "(" interrupted
    };
    static constexpr int lowestOfAll = 10;

    // Moves the operators of at least this precedence from the stack to the output,
    // down to the innermost open "(".
    bool moveOperators(int lowest) {
        while (!stack_.empty() && isOperator(stack_.back().token->type) &&
               precedence(stack_.back().token->type) <= lowest) {
            if (operands_ < 2)
                return false;
            --operands_;
            output_.push_back(*stack_.back().token);
            stack_.pop_back();
        }
        return true;
    }

    // A group must have been reduced to exactly one value.
    bool closeGroup() {
        if (!moveOperators(lowestOfAll) || stack_.empty() || operands_ != 1)
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
