#include "presetdef/from_clause_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

#include <algorithm>

namespace morvane {

using enum PresetParseResult;

namespace {

constexpr CharacterSet nameEnd = "{}";
constexpr CharacterSet oldValueEnd = "=},";
constexpr CharacterSet newValueEnd = "},";

// Reads a word, or a quoted text, which may hold blanks but none of the delimiters. If the closing
// quote is missing at the end of the line, the line feed becomes part of the text.
std::string_view quotedTextOrWord(Cursor& line, const CharacterSet& delimiters) {
    if (!line.accept('"'))
        return line.word(delimiters);
    const auto rest = line.rest();
    const auto end = std::find_if(rest.begin(), rest.end(), [&delimiters](char c) {
        return c == '"' || delimiters.contains(c);
    });
    const auto text = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
    line.advance(text.size());
    line.accept('"');
    return text;
}

} // namespace

PresetParseResult FromClauseParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult FromClauseParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        from_.line = line.line().number;
        expect_ = Expect::oldName;
        return PARSE_PRESET_CONTINUE;
    case Expect::oldName:
        return parseOldName(line);
    case Expect::mapOrClose:
        expect_ = line.accept('{') ? Expect::key : Expect::closeBrace;
        return PARSE_PRESET_CONTINUE;
    case Expect::key:
        return parseKey(line);
    case Expect::equals:
        if (!line.accept('='))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::value;
        return PARSE_PRESET_CONTINUE;
    case Expect::value:
        return parseValue(line);
    case Expect::commaOrMapEnd:
        return parseCommaOrMapEnd(line);
    case Expect::closeBrace:
        if (!line.accept('}'))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::openBrace;
        return PARSE_PRESET_OK;
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

// A missing old name is a syntax error, unlike every other missing name.
PresetParseResult FromClauseParser::parseOldName(Cursor& line) {
    from_.oldName = line.word(nameEnd);
    if (from_.oldName.empty())
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::mapOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult FromClauseParser::parseKey(Cursor& line) {
    key_ = quotedTextOrWord(line, oldValueEnd);
    if (key_.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    expect_ = Expect::equals;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult FromClauseParser::parseValue(Cursor& line) {
    const auto value = quotedTextOrWord(line, newValueEnd);
    if (value.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    if (!from_.values.try_emplace(key_, value).second) // the first pair stays
        from_.repeatedValues.push_back(key_);
    expect_ = Expect::commaOrMapEnd;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult FromClauseParser::parseCommaOrMapEnd(Cursor& line) {
    if (line.accept('}')) {
        expect_ = Expect::closeBrace;
        return PARSE_PRESET_CONTINUE;
    }
    if (!line.accept(','))
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::key;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
