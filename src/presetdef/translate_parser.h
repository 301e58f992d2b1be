// A translate section after its keyword: `{ removed { old } level { from { gain } } }`.
#pragma once

#include "presetdef/mapping_parser.h"
#include "presetdef/preset_parse_result.h"
#include "presetdef/removed_list_parser.h"
#include "presetdef/translate_section.h"

#include <utility>

namespace morvane {

class Cursor;

class TranslateParser {
public:
    PresetParseResult parse(Cursor& line);
    TranslateSection take() { return std::exchange(section_, {}); }

private:
    enum class Expect {
        openBrace,
        itemOrClose,
        removedListEnd,
        mappingEnd
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseItemOrClose(Cursor& line);
    PresetParseResult parseRemovedList(Cursor& line);
    PresetParseResult parseMapping(Cursor& line);

    Expect expect_ = Expect::openBrace;
    RemovedListParser removedList_;
    MappingParser mapping_;
    TranslateSection section_;
};

} // namespace morvane
