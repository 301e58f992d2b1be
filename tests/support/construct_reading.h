// Feeds the parser of one construct of the preset definition file.
//
// The rows of the tests are texts with two characters that are not part of what is read:
//   @  where the parser must stop
//   ~  a blank that must stay a blank; every other blank is also tried as a line break and as the
//      other white space characters
#pragma once

#include "presetdef/preset_parse_result.h"
#include "support/kept_text.h"
#include "support/layouts.h"
#include "support/preset_records.h"
#include "text/cursor.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace morvane::test {

/// What a parser made of a text.
template <typename Record>
struct Reading {
    PresetParseResult result = PresetParseResult::PARSE_PRESET_CONTINUE;
    std::string stop; ///< the text with a "@" where the parser stopped
    Record record;    ///< handed over after PARSE_PRESET_OK
};

/// Feeds a copy of `text`, which is kept, to `parser` line by line until it is done or the text
/// ends.
template <typename Parser>
auto readWith(Parser& parser, std::string_view text) {
    using enum PresetParseResult;
    Reading<decltype(parser.take())> reading;
    std::size_t consumed = 0;
    std::uint32_t number = 0;
    for (const auto line : linesOf(kept(text))) {
        Cursor cursor({line, ++number});
        reading.result = parser.parse(cursor);
        consumed += cursor.column();
        if (reading.result != PARSE_PRESET_CONTINUE)
            break;
    }
    reading.stop = std::string(text).insert(consumed, "@");
    if (reading.result == PARSE_PRESET_OK)
        reading.record = parser.take();
    return reading;
}

/// Expects that a parser reads `row` as `record`, twice in a row, and in every layout as the same
/// record but for its line numbers. The record is that of the layout in one line.
template <typename Parser, typename Record>
void expectReads(std::string_view row, const Record& record) {
    const auto layouts = layoutsOf(row);
    Parser parser;
    for (const char* const time : {"the first time", "the second time"}) {
        const auto reading = readWith(parser, withoutMark(layouts.front()));
        EXPECT_EQ(reading.result, PresetParseResult::PARSE_PRESET_OK) << time;
        EXPECT_EQ(reading.stop, layouts.front()) << time;
        EXPECT_EQ(reading.record, record) << time;
    }
    for (const auto& layout : layouts) {
        const auto reading = readWith(parser, withoutMark(layout));
        EXPECT_EQ(reading.result, PresetParseResult::PARSE_PRESET_OK) << layout;
        EXPECT_EQ(reading.stop, layout);
        EXPECT_EQ(withoutLines(reading.record), withoutLines(record)) << layout;
    }
}

/// Expects that a parser refuses `row` at its "@", in every layout.
template <typename Parser>
void expectRefuses(std::string_view row, PresetParseResult result) {
    for (const auto& layout : layoutsOf(row)) {
        Parser parser;
        const auto reading = readWith(parser, withoutMark(layout));
        EXPECT_EQ(reading.result, result) << layout;
        EXPECT_EQ(reading.stop, layout);
    }
}

} // namespace morvane::test
