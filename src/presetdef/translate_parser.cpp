#include "presetdef/translate_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet keywordEnd = "{";

} // namespace

using enum PresetParseResult;

PresetParseResult TranslateParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult TranslateParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        section_.line = line.line().number;
        expect_ = Expect::itemOrClose;
        return PARSE_PRESET_CONTINUE;
    case Expect::itemOrClose:
        return parseItemOrClose(line);
    case Expect::removedListEnd:
        return parseRemovedList(line);
    case Expect::mappingEnd:
        return parseMapping(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

// The closing brace is read as a word, so another byte right after it makes it a new name.
PresetParseResult TranslateParser::parseItemOrClose(Cursor& line) {
    const auto word = line.peekWord(keywordEnd);
    if (word.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    if (word == "removed") {
        line.advance(word.size());
        expect_ = Expect::removedListEnd;
        return PARSE_PRESET_CONTINUE;
    }
    if (word != "}") {
        expect_ = Expect::mappingEnd;
        return PARSE_PRESET_CONTINUE;
    }
    line.advance(1);
    if (section_.removedLists.empty() && section_.mappings.empty())
        return PARSE_PRESET_EMPTY_DEFINITION;
    expect_ = Expect::openBrace;
    return PARSE_PRESET_OK;
}

PresetParseResult TranslateParser::parseRemovedList(Cursor& line) {
    const auto result = removedList_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    section_.removedLists.push_back(removedList_.take());
    expect_ = Expect::itemOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult TranslateParser::parseMapping(Cursor& line) {
    const auto result = mapping_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    section_.mappings.push_back(mapping_.take());
    expect_ = Expect::itemOrClose;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
