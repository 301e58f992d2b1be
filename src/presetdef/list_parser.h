// An include or exclude list: `exclude rw { gain, index { none }, all }`.
#pragma once

#include "presetdef/index_clause_parser.h"
#include "presetdef/item_parser.h"
#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

#include <utility>

namespace morvane {

class Cursor;

class ListParser {
public:
    PresetParseResult parse(Cursor& line);
    PresetList take() { return std::exchange(list_, {}); }

private:
    enum class Expect {
        kind,
        access,
        openBrace,
        item,
        clauseEnd,
        itemEnd,
        commaOrClose
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseKind(Cursor& line);
    PresetParseResult parseAccess(Cursor& line);
    PresetParseResult parseItemStart(Cursor& line);
    PresetParseResult parseClause(Cursor& line);
    PresetParseResult parseItem(Cursor& line);
    PresetParseResult parseCommaOrClose(Cursor& line);

    Expect expect_ = Expect::kind;
    IndexClauseParser clause_;
    ItemParser item_;
    PresetList list_;
};

} // namespace morvane
