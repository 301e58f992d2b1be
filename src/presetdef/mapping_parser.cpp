#include "presetdef/mapping_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet wordEnd = "{";

} // namespace

using enum PresetParseResult;

PresetParseResult MappingParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult MappingParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::newName:
        return parseNewName(line);
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::clauseOrClose;
        return PARSE_PRESET_CONTINUE;
    case Expect::clauseOrClose:
        return parseClauseOrClose(line);
    case Expect::indexMappingEnd:
        return parseIndexMapping(line);
    case Expect::fromClauseEnd:
        return parseFromClause(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult MappingParser::parseNewName(Cursor& line) {
    mapping_.newName = line.word(wordEnd);
    if (mapping_.newName.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    mapping_.line = line.line().number;
    expect_ = Expect::openBrace;
    return PARSE_PRESET_CONTINUE;
}

// The closing brace is read as a word, so another byte right after it makes it an unknown keyword.
PresetParseResult MappingParser::parseClauseOrClose(Cursor& line) {
    const auto word = line.word(wordEnd);
    if (word == "from") {
        expect_ = Expect::fromClauseEnd;
        return PARSE_PRESET_CONTINUE;
    }
    if (word == "index") {
        expect_ = Expect::indexMappingEnd;
        return PARSE_PRESET_CONTINUE;
    }
    if (word != "}")
        return PARSE_PRESET_INVALID_IDENTIFIER;
    if (mapping_.indexMappings.empty() && mapping_.fromMappings.empty())
        return PARSE_PRESET_EMPTY_DEFINITION;
    expect_ = Expect::newName;
    return PARSE_PRESET_OK;
}

PresetParseResult MappingParser::parseIndexMapping(Cursor& line) {
    const auto result = indexMapping_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    mapping_.indexMappings.push_back(indexMapping_.take());
    expect_ = Expect::clauseOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult MappingParser::parseFromClause(Cursor& line) {
    const auto result = fromClause_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    mapping_.fromMappings.push_back(fromClause_.take());
    expect_ = Expect::clauseOrClose;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
