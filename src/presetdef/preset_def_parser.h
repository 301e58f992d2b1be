// Parses the preset definition file line by line. Opens no files: tests feed it literals.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"
#include "presetdef/preset_parser.h"
#include "presetdef/translate_parser.h"

#include <cstdint>
#include <string_view>

namespace morvane {

class Cursor;

/// The state survives from one line to the next, so any construct may run over several lines. A new
/// parser is at the beginning of a file.
class PresetDefParser {
public:
    /// Parses one line and appends the blocks that it completes to `definitions`. After an error
    /// the parser must not be fed again.
    ///
    /// @param errorColumn after an error, the byte offset at which parsing stopped: after a refused
    ///                    word, at a refused character; else left alone.
    /// @param line        borrowed by the definitions: a line of their text, or of one that lives
    ///                    longer.
    /// @param lineNumber  counted from 1.
    /// @return PARSE_PRESET_OK when no block is open, PARSE_PRESET_CONTINUE when one is, or an
    /// error.
    PresetParseResult parsePresetDefLine(PresetDefinitions& definitions, std::uint32_t& errorColumn,
                                         std::string_view line, std::uint32_t lineNumber);

    /// The first word of the last block, as it stands there.
    std::string_view blockBegin() const { return blockBegin_; }

    /// After an error, the column of the word or character that was refused.
    std::uint32_t errorBegin() const { return errorBegin_; }

private:
    enum class Section {
        none,
        translate,
        preset
    };

    PresetParseResult parseToken(PresetDefinitions& definitions, Cursor& line);
    PresetParseResult parseTranslate(PresetDefinitions& definitions, Cursor& line);
    PresetParseResult parsePreset(PresetDefinitions& definitions, Cursor& line);

    Section section_ = Section::none;
    std::string_view blockBegin_;
    std::uint32_t errorBegin_ = 0;
    TranslateParser translate_;
    PresetParser preset_;
};

} // namespace morvane
