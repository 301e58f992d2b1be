// A double-quoted string of the parameter definition file, which may run over several lines.
#pragma once

#include "paramdef/expression.h"

#include <utility>

namespace morvane {

class Cursor;

class QuotedString {
public:
    /// Consumes an opening quote if the line goes on with one. The string's token begins there.
    bool open(Cursor& line);

    /// Reads on behind the opening quote, or at the first non-blank character of a line that
    /// continues the string. There is no escape character.
    ///
    /// @return whether the closing quote was consumed; if not, the whole line was, and its last
    ///         byte, normally the line feed, is not part of the string.
    bool parse(Cursor& line);

    /// Hands over the finished TOKEN_STRING.
    Token take() { return std::exchange(token_, {}); }

private:
    Token token_;
};

} // namespace morvane
