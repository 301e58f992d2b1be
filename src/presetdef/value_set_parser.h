// A braced set of index values: `{ 1, 4..7, name }`.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

#include <cstdint>
#include <utility>

namespace morvane {

class Cursor;

class ValueSetParser {
public:
    PresetParseResult parse(Cursor& line);
    IndexValueSet take() { return std::exchange(set_, {}); }

private:
    enum class Expect {
        openBrace,
        element,
        restOfNumber,
        highEnd,
        commaOrClose
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseElement(Cursor& line);
    PresetParseResult parseRestOfNumber(Cursor& line);
    PresetParseResult parseHighEnd(Cursor& line);
    PresetParseResult parseCommaOrClose(Cursor& line);

    Expect expect_ = Expect::openBrace;
    std::uint32_t number_ = 0; ///< a single number or the low end of a range
    IndexValueSet set_;
};

} // namespace morvane
