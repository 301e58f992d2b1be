#include "presetdef/removed_list_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet nameEnd = ",}";

} // namespace

using enum PresetParseResult;

PresetParseResult RemovedListParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult RemovedListParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        list_.line = line.line().number;
        expect_ = Expect::name;
        return PARSE_PRESET_CONTINUE;
    case Expect::name:
        return parseName(line);
    case Expect::commaOrClose:
        if (line.accept('}')) {
            expect_ = Expect::openBrace;
            return PARSE_PRESET_OK;
        }
        if (!line.accept(','))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::name;
        return PARSE_PRESET_CONTINUE;
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult RemovedListParser::parseName(Cursor& line) {
    const auto name = line.word(nameEnd);
    if (name.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    list_.names.emplace_back(name);
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
