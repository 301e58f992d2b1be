// One parameter of a list, with its index clauses: `gain { index { input {1} } }`.
#pragma once

#include "presetdef/index_clause_parser.h"
#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

#include <utility>

namespace morvane {

class Cursor;

class ItemParser {
public:
    PresetParseResult parse(Cursor& line);
    PresetItem take() { return std::exchange(item_, {}); }

private:
    enum class Expect {
        name,
        openBraceOrEnd,
        indexKeyword,
        clauseEnd,
        closeBraceOrKeyword
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseName(Cursor& line);
    PresetParseResult parseOpenBraceOrEnd(Cursor& line);
    PresetParseResult parseClause(Cursor& line);
    PresetParseResult end();

    Expect expect_ = Expect::name;
    IndexClauseParser clause_;
    PresetItem item_;
};

} // namespace morvane
