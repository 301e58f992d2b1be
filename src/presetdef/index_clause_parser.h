// An index clause after its keyword: `{ input {0..3}, not output }` or `{ none }`.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"
#include "presetdef/value_set_parser.h"

#include <utility>

namespace morvane {

class Cursor;

class IndexClauseParser {
public:
    PresetParseResult parse(Cursor& line);
    IndexSpec take() { return std::exchange(clause_, {}); }

private:
    enum class Expect {
        openBrace,
        selector,
        indexName,
        valuesCommaOrClose,
        valuesEnd
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseSelectorStart(Cursor& line);
    PresetParseResult parseIndexName(Cursor& line);
    PresetParseResult parseValuesCommaOrClose(Cursor& line);
    PresetParseResult parseValues(Cursor& line);
    void keepSelector();

    Expect expect_ = Expect::openBrace;
    ValueSetParser values_;
    IndexSelector selector_;
    IndexSpec clause_;
};

} // namespace morvane
