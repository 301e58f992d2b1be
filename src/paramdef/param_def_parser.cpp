#include "paramdef/param_def_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

#include <algorithm>
#include <array>
#include <utility>

namespace morvane {

namespace {

constexpr CharacterSet nameEnd = "[]";
constexpr CharacterSet accessEnd = "{";
constexpr CharacterSet keywordEnd = "({";

using State = ParamDefParseState;

struct AttributeKeyword {
    std::string_view word;
    State state;
    bool takesExpression; // and so needs its "(" on the same line
};

constexpr std::array attributeKeywords{
    AttributeKeyword{"rangeValid", State::inRangeValid, false},
    AttributeKeyword{"rangeDoc", State::inRangeDoc, false},
    AttributeKeyword{"ctrlRO", State::inCtrlRO, true},
    AttributeKeyword{"ctrlValid", State::inCtrlValid, true},
    AttributeKeyword{"default", State::inDefault, false},
    AttributeKeyword{"valueChange", State::inValueChange, false},
    AttributeKeyword{"index", State::inIndex, false},
};

// Moves the attribute that was just completed to the end of its list, or drops it.
template <typename Parser, typename Attribute>
void finish(Parser& parser, std::vector<Attribute>& attributes, bool isKept) {
    if (isKept)
        attributes.push_back(parser.take());
    else
        parser.drop();
}

} // namespace

ParamDefResult ParamDefParser::parseParamDefLine(SystemParameterTable& table,
                                                 std::uint32_t& errorColumn, std::string_view line,
                                                 std::uint32_t lineNumber) {
    Cursor cursor({line, lineNumber, &table.text()});
    if (!cursor.skipSpace() || cursor.sees('#'))
        return ParamDefResult::ok;
    const auto result =
        readTokens<ParamDefResult::incomplete>(cursor, [&] { return readToken(table, cursor); });
    errorColumn = cursor.tokenColumn();
    return result == ParamDefResult::incomplete ? ParamDefResult::ok : result;
}

ParamDefResult ParamDefParser::readToken(SystemParameterTable& table, Cursor& line) {
    switch (state_) {
    case State::expectName:
        return readName(table, line);
    case State::expectAccess:
        return readAccess(table, line);
    case State::expectOpenBrace:
        if (!line.accept('{'))
            return ParamDefResult::syntaxError;
        state_ = State::expectAttribute;
        return ParamDefResult::incomplete;
    case State::expectAttribute:
        return readAttributeKeyword(line);
    case State::inRangeValid:
    case State::inRangeDoc:
    case State::inCtrlRO:
    case State::inCtrlValid:
    case State::inDefault:
    case State::inValueChange:
    case State::inIndex:
        return readAttribute(table, line);
    }
    return ParamDefResult::internalError;
}

ParamDefResult ParamDefParser::readName(SystemParameterTable& table, Cursor& line) {
    const auto name = line.word(nameEnd);
    if (name.empty())
        return ParamDefResult::syntaxError;
    table.insert(name, line.line().number);
    blockName_ = name;
    state_ = State::expectAccess;
    return ParamDefResult::incomplete;
}

ParamDefResult ParamDefParser::readAccess(SystemParameterTable& table, Cursor& line) {
    auto* const parameter = table.lastInserted();
    if (parameter == nullptr)
        return ParamDefResult::internalError;
    const auto access = accessTypeOf(line.word(accessEnd));
    if (!access)
        return ParamDefResult::invalidAccess;
    const bool becomesIndex =
        parameter->access != AccessType::ACCESS_INDEX && *access == AccessType::ACCESS_INDEX;
    lacksRanges_ = lacksRanges_ || (becomesIndex && kept_ != KeptAttributes::all);
    parameter->access = *access;
    state_ = State::expectOpenBrace;
    return ParamDefResult::incomplete;
}

ParamDefResult ParamDefParser::readAttributeKeyword(Cursor& line) {
    if (line.accept('}')) {
        state_ = State::expectName;
        return ParamDefResult::incomplete;
    }
    const auto word = line.word(keywordEnd);
    const auto* const keyword = std::find_if(attributeKeywords.begin(), attributeKeywords.end(),
                                             [word](const auto& row) { return row.word == word; });
    if (keyword == attributeKeywords.end())
        return ParamDefResult::syntaxError;
    if (keyword->takesExpression) {
        line.skipSpace();
        if (!line.accept('('))
            return ParamDefResult::syntaxError;
    }
    state_ = keyword->state;
    return ParamDefResult::incomplete;
}

ParamDefResult ParamDefParser::readAttribute(SystemParameterTable& table, Cursor& line) {
    auto result = readAttributeBody(line);
    if (result != ParamDefResult::ok)
        return result;
    auto* const parameter = table.lastInserted();
    if (parameter == nullptr)
        return ParamDefResult::internalError;
    result = finishAttribute(*parameter);
    if (result != ParamDefResult::ok)
        return result;
    state_ = State::expectAttribute;
    return ParamDefResult::incomplete;
}

ParamDefResult ParamDefParser::readAttributeBody(Cursor& line) {
    switch (state_) {
    case State::inRangeValid:
    case State::inRangeDoc:
        return range_.parse(line);
    case State::inCtrlRO:
    case State::inCtrlValid:
        return tokenizer_.parse(line, expression_);
    case State::inDefault:
        return default_.parse(line);
    case State::inValueChange:
        return valueChange_.parse(line);
    case State::inIndex:
        return index_.parse(line);
    case State::expectName:
    case State::expectAccess:
    case State::expectOpenBrace:
    case State::expectAttribute:
        break;
    }
    return ParamDefResult::internalError;
}

ParamDefResult ParamDefParser::finishAttribute(SystemParameter& parameter) {
    const bool keepsAll = kept_ == KeptAttributes::all;
    switch (state_) {
    case State::inRangeValid:
        finish(range_, parameter.rangeValid,
               keepsAll || parameter.access == AccessType::ACCESS_INDEX);
        break;
    case State::inRangeDoc:
        finish(range_, parameter.rangeDoc, keepsAll);
        break;
    case State::inCtrlRO:
        // Nobody reads a write-only parameter, so making it read-only for a while is a mistake.
        if (parameter.access == AccessType::ACCESS_WO)
            return ParamDefResult::invalidAccess;
        finish(expression_, parameter.ctrlRO, keepsAll);
        break;
    case State::inCtrlValid:
        finish(expression_, parameter.ctrlValid, true);
        break;
    case State::inDefault:
        finish(default_, parameter.defaults, keepsAll);
        break;
    case State::inValueChange:
        finish(valueChange_, parameter.valueChange, keepsAll);
        break;
    case State::inIndex:
        parameter.indices.push_back(index_.take());
        break;
    case State::expectName:
    case State::expectAccess:
    case State::expectOpenBrace:
    case State::expectAttribute:
        return ParamDefResult::internalError;
    }
    return ParamDefResult::ok;
}

} // namespace morvane
