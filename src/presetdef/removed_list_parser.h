// The part of a removed list after its keyword: `{ oldgain, oldmode }`.
#pragma once

#include "presetdef/preset_parse_result.h"
#include "presetdef/translate_section.h"

#include <utility>

namespace morvane {

class Cursor;

class RemovedListParser {
public:
    PresetParseResult parse(Cursor& line);
    RemovedList take() { return std::exchange(list_, {}); }

private:
    enum class Expect {
        openBrace,
        name,
        commaOrClose
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseName(Cursor& line);

    Expect expect_ = Expect::openBrace;
    RemovedList list_;
};

} // namespace morvane
