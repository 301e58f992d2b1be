#include "presetdef/list_parser.h"

#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

using enum PresetParseResult;

namespace {

constexpr CharacterSet delimiters = "{,}";
constexpr CharacterSet onlySpace = "";

} // namespace

PresetParseResult ListParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult ListParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::kind:
        return parseKind(line);
    case Expect::access:
        return parseAccess(line);
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::item;
        return PARSE_PRESET_CONTINUE;
    case Expect::item:
        return parseItemStart(line);
    case Expect::clauseEnd:
        return parseClause(line);
    case Expect::itemEnd:
        return parseItem(line);
    case Expect::commaOrClose:
        return parseCommaOrClose(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

// Only white space ends this word, so "include{" is refused although the block took it for a list.
PresetParseResult ListParser::parseKind(Cursor& line) {
    const auto word = line.word(onlySpace);
    if (word == "include")
        list_.kind = PresetList::Kind::include;
    else if (word == "exclude")
        list_.kind = PresetList::Kind::exclude;
    else
        return PARSE_PRESET_SYNTAX;
    list_.line = line.line().number;
    list_.place = word.substr(0, 0);
    expect_ = Expect::access;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ListParser::parseAccess(Cursor& line) {
    const bool includes = list_.kind == PresetList::Kind::include;
    if (line.word(delimiters) != (includes ? "ro" : "rw"))
        return PARSE_PRESET_INC_EXC_ACCESS_ERR;
    list_.access = includes ? PresetList::Access::ro : PresetList::Access::rw;
    expect_ = Expect::openBrace;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ListParser::parseItemStart(Cursor& line) {
    const auto word = line.peekWord(delimiters);
    if (word.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    if (word == "all") {
        list_.all = true;
        line.advance(word.size());
        expect_ = Expect::commaOrClose;
    } else if (word == "index") {
        line.advance(word.size());
        expect_ = Expect::clauseEnd;
    } else {
        expect_ = Expect::itemEnd;
    }
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ListParser::parseClause(Cursor& line) {
    const auto result = clause_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    list_.indexSpecs.push_back(clause_.take());
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ListParser::parseItem(Cursor& line) {
    const auto result = item_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    list_.items.push_back(item_.take());
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ListParser::parseCommaOrClose(Cursor& line) {
    if (line.accept('}')) {
        expect_ = Expect::kind;
        return PARSE_PRESET_OK;
    }
    if (list_.all || !line.accept(',')) // nothing can be added to everything
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::item;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
