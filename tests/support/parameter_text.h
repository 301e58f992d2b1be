// What the readers of the parameter definition file give, as text in one line.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"
#include "support/kept_text.h"
#include "support/layouts.h"
#include "text/cursor.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

namespace morvane::test {

/// Whether the texts say where in the file a thing began.
enum class Places {
    left,  ///< not at all
    shown, ///< as "@LINE:COLUMN"
};

/// Tokens with blanks between them: 5 "text" name + ( )
std::string textOf(const TokenList& tokens, Places places = Places::left);

/// The name of an index, or several with blanks between them.
std::string textOf(const IndexDimension& dimension, Places places = Places::left);

/// [condition] { low..high, ... }
std::string textOf(const RangeSpec& range, Places places = Places::left);

/// [condition] { value }
std::string textOf(const DefaultSpec& defaultSpec, Places places = Places::left);

/// "from" -> "to"
std::string textOf(const ValueChange& change, Places places = Places::left);

/// A parameter with its line, its access code and its attributes: name@LINE CODE index ...; ...
std::string textOf(const SystemParameter& parameter);

/// The parameters in order, one a line.
std::string textOf(const SystemParameterTable& table);

/// What a reader made of a text.
struct AttributeReading {
    ParamDefResult result = ParamDefResult::incomplete;
    std::string
        stop; ///< the text with a "@" where the reading stopped; after an error, at the caret
};

/// Feeds a copy of `text`, which is kept, to `read`, which is called with a cursor for each line,
/// until it is done or the text ends.
template <typename Read>
AttributeReading readAttribute(std::string_view text, Read read) {
    AttributeReading reading;
    std::size_t before = 0;
    std::size_t stop = 0;
    std::uint32_t number = 0;
    for (const auto line : linesOf(kept(text))) {
        Cursor cursor({line, ++number, &keptTexts()});
        reading.result = read(cursor);
        const bool failed =
            reading.result != ParamDefResult::ok && reading.result != ParamDefResult::incomplete;
        stop = before + (failed ? cursor.tokenColumn() : cursor.column());
        if (reading.result != ParamDefResult::incomplete)
            break;
        before += line.size();
    }
    reading.stop = std::string(text).insert(stop, "@");
    return reading;
}

/// An attribute that a parser accepts.
struct AttributeRow {
    const char* why;
    const char* row;  ///< "@" after the last byte that is read
    const char* text; ///< what is made of it
};

/// Expects that a parser reads each row, in every layout and one after the other.
template <typename Parser>
void expectAttributes(std::span<const AttributeRow> rows) {
    Parser parser;
    for (const auto& [why, row, text] : rows) {
        for (const auto& layout : layoutsOf(row)) {
            SCOPED_TRACE(std::string(why) + ": " + layout);
            const auto reading = readAttribute(
                withoutMark(layout), [&parser](Cursor& line) { return parser.parse(line); });
            EXPECT_EQ(reading.result, ParamDefResult::ok);
            EXPECT_EQ(reading.stop, layout);
            EXPECT_EQ(textOf(parser.take()), text);
        }
    }
}

/// An attribute with a syntax error.
struct MistakeRow {
    const char* why;
    const char* row; ///< "@" at the caret
};

/// Expects that a parser refuses each row, in every layout.
template <typename Parser>
void expectSyntaxErrors(std::span<const MistakeRow> rows) {
    for (const auto& [why, row] : rows) {
        for (const auto& layout : layoutsOf(row)) {
            SCOPED_TRACE(std::string(why) + ": " + layout);
            Parser parser;
            const auto reading = readAttribute(
                withoutMark(layout), [&parser](Cursor& line) { return parser.parse(line); });
            EXPECT_EQ(reading.result, ParamDefResult::syntaxError);
            EXPECT_EQ(reading.stop, layout);
        }
    }
}

} // namespace morvane::test

// Where GoogleTest looks for it.
namespace morvane {

void PrintTo(ParamDefResult result, std::ostream* out);

} // namespace morvane
