// The part of a from clause after its keyword: `{ gain { "old value" = new, on = 1 } }`.
#pragma once

#include "presetdef/preset_parse_result.h"
#include "presetdef/translate_section.h"

#include <string_view>
#include <utility>

namespace morvane {

class Cursor;

class FromClauseParser {
public:
    PresetParseResult parse(Cursor& line);
    FromMapping take() { return std::exchange(from_, {}); }

private:
    enum class Expect {
        openBrace,
        oldName,
        mapOrClose,
        key,
        equals,
        value,
        commaOrMapEnd,
        closeBrace
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseOldName(Cursor& line);
    PresetParseResult parseKey(Cursor& line);
    PresetParseResult parseValue(Cursor& line);
    PresetParseResult parseCommaOrMapEnd(Cursor& line);

    Expect expect_ = Expect::openBrace;
    std::string_view key_; ///< of the pair being read
    FromMapping from_;
};

} // namespace morvane
