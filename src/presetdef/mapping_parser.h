// One mapping of a translate section: `level { from { gain } index 1 { input = idx::0 } }`.
#pragma once

#include "presetdef/from_clause_parser.h"
#include "presetdef/index_mapping_parser.h"
#include "presetdef/preset_parse_result.h"
#include "presetdef/translate_section.h"

#include <utility>

namespace morvane {

class Cursor;

class MappingParser {
public:
    PresetParseResult parse(Cursor& line);
    TranslateMapping take() { return std::exchange(mapping_, {}); }

private:
    enum class Expect {
        newName,
        openBrace,
        clauseOrClose,
        indexMappingEnd,
        fromClauseEnd
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseNewName(Cursor& line);
    PresetParseResult parseClauseOrClose(Cursor& line);
    PresetParseResult parseIndexMapping(Cursor& line);
    PresetParseResult parseFromClause(Cursor& line);

    Expect expect_ = Expect::newName;
    IndexMappingParser indexMapping_;
    FromClauseParser fromClause_;
    TranslateMapping mapping_;
};

} // namespace morvane
