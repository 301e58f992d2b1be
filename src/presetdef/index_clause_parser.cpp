#include "presetdef/index_clause_parser.h"

#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

using enum PresetParseResult;

namespace {

constexpr CharacterSet delimiters = "{,}";

} // namespace

PresetParseResult IndexClauseParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult IndexClauseParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        clause_.place = line.rest().substr(0, 0);
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        clause_.line = line.line().number;
        expect_ = Expect::selector;
        return PARSE_PRESET_CONTINUE;
    case Expect::selector:
        return parseSelectorStart(line);
    case Expect::indexName:
        return parseIndexName(line);
    case Expect::valuesCommaOrClose:
        return parseValuesCommaOrClose(line);
    case Expect::valuesEnd:
        return parseValues(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult IndexClauseParser::parseSelectorStart(Cursor& line) {
    selector_ = {};
    const auto word = line.peekWord(delimiters);
    if (word.empty())
        return PARSE_PRESET_INVALID_IDENTIFIER;
    if (word == "not") {
        selector_.isNot = true;
        line.advance(word.size());
    }
    expect_ = Expect::indexName;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult IndexClauseParser::parseIndexName(Cursor& line) {
    const auto word = line.word(delimiters);
    if (word.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    if (word == "none")
        clause_.none = true;
    else
        selector_.indexName = word;
    expect_ = Expect::valuesCommaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult IndexClauseParser::parseValuesCommaOrClose(Cursor& line) {
    if (line.sees('{')) {
        expect_ = Expect::valuesEnd;
        return PARSE_PRESET_CONTINUE;
    }
    if (line.accept(',')) {
        keepSelector();
        expect_ = Expect::selector;
        return PARSE_PRESET_CONTINUE;
    }
    if (!line.accept('}'))
        return PARSE_PRESET_SYNTAX;
    keepSelector();
    if (clause_.none && !clause_.selectors.empty())
        return PARSE_PRESET_INVALID_INDEX;
    expect_ = Expect::openBrace;
    return PARSE_PRESET_OK;
}

PresetParseResult IndexClauseParser::parseValues(Cursor& line) {
    const auto result = values_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    // Of two sets after one name, the second counts.
    selector_.hasSeveralSets = selector_.values.kind != IndexValueSet::Kind::none;
    selector_.values = values_.take();
    expect_ = Expect::valuesCommaOrClose;
    return PARSE_PRESET_CONTINUE;
}

// "none" leaves no name and so no selector.
void IndexClauseParser::keepSelector() {
    if (!selector_.indexName.empty())
        clause_.selectors.push_back(std::exchange(selector_, {}));
}

} // namespace morvane
