#include "paramdef/expression_tokenizer.h"

#include "text/cursor.h"
#include "text/number.h"
#include "text/token_loop.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace morvane {

namespace {

struct OperatorText {
    std::string_view text;
    TokenType type;
};

// Searched from the top, so the two-character operators come before their first characters.
constexpr std::array operators{
    OperatorText{"||", TokenType::OP_OR},       OperatorText{"&&", TokenType::OP_AND},
    OperatorText{"==", TokenType::OP_EQ},       OperatorText{"!=", TokenType::OP_NE},
    OperatorText{"<=", TokenType::OP_LE},       OperatorText{">=", TokenType::OP_GE},
    OperatorText{"<<", TokenType::OP_SHL},      OperatorText{">>", TokenType::OP_SHR},
    OperatorText{"(", TokenType::TOKEN_LPAREN}, OperatorText{")", TokenType::TOKEN_RPAREN},
    OperatorText{"|", TokenType::OP_BITOR},     OperatorText{"^", TokenType::OP_BITXOR},
    OperatorText{"&", TokenType::OP_BITAND},    OperatorText{"<", TokenType::OP_LT},
    OperatorText{">", TokenType::OP_GT},        OperatorText{"+", TokenType::OP_ADD},
    OperatorText{"-", TokenType::OP_SUB},       OperatorText{"*", TokenType::OP_MUL},
    OperatorText{"/", TokenType::OP_DIV},       OperatorText{"%", TokenType::OP_MOD},
    OperatorText{"$", TokenType::OP_CONTAINS},
};

constexpr CharacterSet wordDelimiters = "()|&^=!<>+-*/%$[]";

Token tokenAt(const Cursor& line, TokenType type) {
    return {.line = line.line().number, .column = line.tokenColumn(), .type = type, .text = {}};
}

// The search for an operator begins only where no word does.
static_assert(std::all_of(operators.begin(), operators.end(), [](const OperatorText& row) {
    return wordDelimiters.contains(row.text.front());
}));

// A "-" is the sign of the number after it at the beginning and after an operator, nowhere else:
// "1 - -5" works, "(-5)" inside an expression and "-name" stay two-operand minuses, which cannot be
// evaluated.
bool endInSign(const TokenList& tokens) {
    const auto count = tokens.size();
    return count > 0 && tokens[count - 1].type == TokenType::OP_SUB &&
           (count == 1 || isOperator(tokens[count - 2].type));
}

std::int32_t negated(std::int32_t number) {
    return static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(number));
}

} // namespace

ParamDefResult ExpressionTokenizer::parse(Cursor& line, Expression& expression) {
    return readTokens<ParamDefResult::incomplete>(line,
                                                  [&] { return readToken(line, expression); });
}

ParamDefResult ExpressionTokenizer::readToken(Cursor& line, Expression& expression) {
    switch (inside_) {
    case Inside::string:
        readString(line, expression);
        return ParamDefResult::incomplete;
    case Inside::index:
        readIndex(line, expression);
        return ParamDefResult::incomplete;
    case Inside::expression:
        break;
    }
    if (string_.open(line)) {
        inside_ = Inside::string;
        readString(line, expression);
        return ParamDefResult::incomplete;
    }
    const auto word = line.word(wordDelimiters);
    if (word.empty())
        return readSymbol(line, expression);
    addWord(line, word, expression);
    return ParamDefResult::incomplete;
}

void ExpressionTokenizer::readString(Cursor& line, Expression& expression) {
    if (!string_.parse(line))
        return;
    inside_ = Inside::expression;
    expression.tokens.push_back(string_.take());
}

void ExpressionTokenizer::readIndex(Cursor& line, Expression& expression) {
    const auto rest = line.rest();
    const auto close = rest.find(']');
    indexText_ += rest.substr(0, close);
    line.advance(close == std::string_view::npos ? rest.size() : close + 1);
    if (close == std::string_view::npos)
        return;
    inside_ = Inside::expression;
    auto& name = expression.tokens.back().text;
    std::string indexed(name);
    indexed.append("[").append(trimSpace(indexText_)).append("]");
    name = line.keep(std::move(indexed));
    indexText_.clear();
}

ParamDefResult ExpressionTokenizer::readSymbol(Cursor& line, Expression& expression) {
    const auto* const op = std::find_if(operators.begin(), operators.end(),
                                        [&](const auto& row) { return line.sees(row.text); });
    if (op != operators.end()) {
        line.advance(op->text.size());
        return addOperator(line, op->type, expression);
    }
    const bool afterName =
        !expression.empty() && expression.tokens.back().type == TokenType::TOKEN_NAME;
    if (nameIndices_ == NameIndices::refused || !afterName || !line.accept('['))
        return ParamDefResult::syntaxError;
    inside_ = Inside::index;
    return ParamDefResult::incomplete;
}

ParamDefResult ExpressionTokenizer::addOperator(Cursor& line, TokenType type,
                                                Expression& expression) {
    if (type == TokenType::TOKEN_LPAREN)
        ++depth_;
    if (type == TokenType::TOKEN_RPAREN && --depth_ == 0) {
        depth_ = 1;
        line.skipSpace();
        return ParamDefResult::ok;
    }
    expression.tokens.push_back(tokenAt(line, type));
    return ParamDefResult::incomplete;
}

void ExpressionTokenizer::addWord(const Cursor& line, std::string_view word,
                                  Expression& expression) {
    const auto number = wholeNumber(word);
    if (number && endInSign(expression.tokens)) {
        auto& sign = expression.tokens.back();
        sign.type = TokenType::TOKEN_NUMBER;
        sign.number = negated(*number);
        return;
    }
    auto token = tokenAt(line, number ? TokenType::TOKEN_NUMBER : TokenType::TOKEN_NAME);
    if (number)
        token.number = *number;
    else
        token.text = word;
    expression.tokens.push_back(token);
}

} // namespace morvane
