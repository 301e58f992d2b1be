// The part of an index mapping after its keyword: `1 { input = idx::0, output = main }`.
#pragma once

#include "presetdef/preset_parse_result.h"
#include "presetdef/translate_section.h"

#include <string_view>
#include <utility>

namespace morvane {

class Cursor;

class IndexMappingParser {
public:
    PresetParseResult parse(Cursor& line);
    IndexMapping take() { return std::exchange(mapping_, {}); }

private:
    enum class Expect {
        count,
        openBrace,
        indexName,
        equals,
        text,
        commaOrClose
    };

    PresetParseResult parseToken(Cursor& line);
    PresetParseResult parseCount(Cursor& line);
    PresetParseResult parseIndexName(Cursor& line);
    PresetParseResult parseText(Cursor& line);
    PresetParseResult parseCommaOrClose(Cursor& line);

    Expect expect_ = Expect::count;
    std::string_view indexName_; ///< of the pair being read
    IndexMapping mapping_;
};

} // namespace morvane
