#include "presetdef/index_mapping_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/number.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet nameEnd = "=";
constexpr CharacterSet textEnd = ",}";

} // namespace

using enum PresetParseResult;

PresetParseResult IndexMappingParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult IndexMappingParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::count:
        return parseCount(line);
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::indexName;
        return PARSE_PRESET_CONTINUE;
    case Expect::indexName:
        return parseIndexName(line);
    case Expect::equals:
        if (!line.accept('='))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::text;
        return PARSE_PRESET_CONTINUE;
    case Expect::text:
        return parseText(line);
    case Expect::commaOrClose:
        return parseCommaOrClose(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult IndexMappingParser::parseCount(Cursor& line) {
    if (!line.seesDigit())
        return PARSE_PRESET_INVALID_INTEGER;
    mapping_.place = line.rest().substr(0, 0);
    mapping_.count = readDigits(line);
    mapping_.line = line.line().number;
    expect_ = Expect::openBrace;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult IndexMappingParser::parseIndexName(Cursor& line) {
    indexName_ = line.word(nameEnd);
    if (indexName_.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    expect_ = Expect::equals;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult IndexMappingParser::parseText(Cursor& line) {
    const auto text = line.word(textEnd);
    if (text.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    mapping_.pairs.emplace_back(indexName_, text);
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult IndexMappingParser::parseCommaOrClose(Cursor& line) {
    if (line.accept('}')) {
        expect_ = Expect::count;
        return PARSE_PRESET_OK;
    }
    if (!line.accept(','))
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::indexName;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
