// The literals of the parameter definition file: bare numbers and double-quoted strings.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/param_def_result.h"

#include <string>
#include <utility>

namespace morvane {

class CharacterSet;
class Cursor;

/// Reads the word at the cursor as a number.
///
/// @param delimiters what ends the word besides white space.
/// @param token      becomes a TOKEN_NUMBER.
/// @return ok; syntaxError for an empty word, or for one that is not entirely a number, with the
///         cursor's mark moved to the first byte that is not part of the number.
ParamDefResult readBareNumber(Cursor& line, const CharacterSet& delimiters, Token& token);

/// A string may run over several lines.
class QuotedString {
public:
    /// Consumes an opening quote if there is one at the cursor. The string's token begins there.
    bool open(Cursor& line);

    /// Reads on after the opening quote, or from the first non-blank character of a line that
    /// continues the string. There is no escape character.
    ///
    /// @return whether the closing quote was consumed; if not, the whole line was, and its last
    ///         byte, normally the line feed, is not part of the string.
    bool parse(Cursor& line);

    /// Hands over the finished TOKEN_STRING.
    Token take() { return std::exchange(token_, {}); }

private:
    Token token_;
    std::string begun_; ///< what earlier lines gave
};

} // namespace morvane
