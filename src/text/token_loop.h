// The loop that every parser of both definition languages runs over the tokens of one line.
#pragma once

#include "text/cursor.h"

namespace morvane {

/// Calls `readToken` at the beginning of every token, which it marks, until the call returns
/// anything but `Unfinished` or the line ends.
///
/// @param readToken a callable without arguments that consumes something, changes the parser's
///                  state, or reports an error.
/// @return the last result; `Unfinished` at the end of the line.
template <auto Unfinished, typename ReadToken>
decltype(Unfinished) readTokens(Cursor& line, ReadToken readToken) {
    while (line.skipSpace()) {
        line.markToken();
        const auto result = readToken();
        if (result != Unfinished)
            return result;
    }
    return Unfinished;
}

} // namespace morvane
