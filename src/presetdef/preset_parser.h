// A preset block: `name preset { list list }`.
#pragma once

#include "presetdef/list_parser.h"
#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

#include <utility>

namespace morvane {

class Cursor;

class PresetParser {
public:
    PresetParseResult parse(Cursor& line);
    PresetDefinition take() { return std::exchange(preset_, {}); }

private:
    enum class Expect {
        header,
        openBrace,
        listOrClose,
        listEnd
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseHeader(Cursor& line);
    PresetParseResult parseListOrClose(Cursor& line);
    PresetParseResult parseList(Cursor& line);

    Expect expect_ = Expect::header;
    ListParser list_;
    PresetDefinition preset_;
};

} // namespace morvane
