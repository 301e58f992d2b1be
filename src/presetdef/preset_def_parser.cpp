#include "presetdef/preset_def_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet keywordEnd = "{";

} // namespace

using enum PresetParseResult;

PresetParseResult PresetDefParser::parsePresetDefLine(PresetDefinitions& definitions,
                                                      std::uint32_t& errorColumn,
                                                      std::string_view line,
                                                      std::uint32_t lineNumber) {
    Cursor cursor({line, lineNumber});
    cursor.skipSpace();
    if (!cursor.sees('#')) {
        const auto result = readTokens<PARSE_PRESET_CONTINUE>(
            cursor, [&] { return parseToken(definitions, cursor); });
        if (result != PARSE_PRESET_CONTINUE) {
            errorColumn = cursor.column();
            errorBegin_ = cursor.tokenColumn();
            return result;
        }
    }
    return section_ == Section::none ? PARSE_PRESET_OK : PARSE_PRESET_CONTINUE;
}

PresetParseResult PresetDefParser::parseToken(PresetDefinitions& definitions, Cursor& line) {
    switch (section_) {
    case Section::none: {
        constexpr std::string_view keyword = "translate";
        blockBegin_ = line.peekWord(keywordEnd);
        const bool translates = blockBegin_ == keyword;
        if (translates)
            line.advance(keyword.size());
        section_ = translates ? Section::translate : Section::preset;
        return PARSE_PRESET_CONTINUE;
    }
    case Section::translate:
        return parseTranslate(definitions, line);
    case Section::preset:
        return parsePreset(definitions, line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult PresetDefParser::parseTranslate(PresetDefinitions& definitions, Cursor& line) {
    const auto result = translate_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    definitions.translateSections.push_back(translate_.take());
    section_ = Section::none;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult PresetDefParser::parsePreset(PresetDefinitions& definitions, Cursor& line) {
    const auto result = preset_.parse(line);
    if (result != PARSE_PRESET_OK)
        return result;
    definitions.presets.push_back(preset_.take());
    section_ = Section::none;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
