#include "presetdef/preset_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet wordEnd = "{";

} // namespace

using enum PresetParseResult;

PresetParseResult PresetParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult PresetParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::header:
        return parseHeader(line);
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::listOrClose;
        return PARSE_PRESET_CONTINUE;
    case Expect::listOrClose:
        return parseListOrClose(line);
    case Expect::listEnd:
        return parseList(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

// Both words must stand on one line.
PresetParseResult PresetParser::parseHeader(Cursor& line) {
    constexpr std::string_view keyword = "preset";
    const auto name = line.word(wordEnd);
    line.skipSpace();
    if (line.word(wordEnd) != keyword || name.empty() || name == keyword)
        return PARSE_PRESET_INVALID_IDENTIFIER;
    preset_.name = name;
    preset_.line = line.line().number;
    expect_ = Expect::openBrace;
    return PARSE_PRESET_CONTINUE;
}

// The closing brace is read as a word, so "}x" does not close the block.
PresetParseResult PresetParser::parseListOrClose(Cursor& line) {
    const auto word = line.peekWord(wordEnd);
    if (word == "}") {
        line.advance(1);
        expect_ = Expect::header;
        return PARSE_PRESET_OK;
    }
    if (word != "include" && word != "exclude")
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::listEnd;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult PresetParser::parseList(Cursor& line) {
    const auto result = list_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    auto list = list_.take();
    const bool includes = list.kind == PresetList::Kind::include;
    (includes ? preset_.includeLists : preset_.excludeLists).push_back(std::move(list));
    expect_ = Expect::listOrClose;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
