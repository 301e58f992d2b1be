#include "presetdef/item_parser.h"

#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

using enum PresetParseResult;

namespace {

constexpr CharacterSet delimiters = "{,}";

} // namespace

PresetParseResult ItemParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult ItemParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::name:
        return parseName(line);
    case Expect::openBraceOrEnd:
        return parseOpenBraceOrEnd(line);
    case Expect::indexKeyword:
        if (line.word(delimiters) != "index")
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::clauseEnd;
        return PARSE_PRESET_CONTINUE;
    case Expect::clauseEnd:
        return parseClause(line);
    case Expect::closeBraceOrKeyword:
        if (line.accept('}'))
            return end();
        expect_ = Expect::indexKeyword;
        return PARSE_PRESET_CONTINUE;
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult ItemParser::parseName(Cursor& line) {
    const auto name = line.word(delimiters);
    if (name.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    item_.name = name;
    item_.line = line.line().number;
    expect_ = Expect::openBraceOrEnd;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ItemParser::parseOpenBraceOrEnd(Cursor& line) {
    if (line.sees(',') || line.sees('}')) // left for the list
        return end();
    if (!line.accept('{'))
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::indexKeyword;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ItemParser::parseClause(Cursor& line) {
    const auto result = clause_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    item_.indexSpecs.push_back(clause_.take());
    expect_ = Expect::closeBraceOrKeyword;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ItemParser::end() {
    expect_ = Expect::name;
    return PARSE_PRESET_OK;
}

} // namespace morvane
