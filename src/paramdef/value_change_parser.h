// The part of a `valueChange` attribute after its keyword.
#pragma once

#include "paramdef/literal.h"
#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"

#include <utility>

namespace morvane {

class Cursor;

/// Reads `{ old -> new }`, over as many lines as it takes.
class ValueChangeParser {
public:
    /// @return ok when the closing brace was consumed.
    ParamDefResult parse(Cursor& line);

    /// Hands over the value change that was read and starts again with an empty one.
    ValueChange take() { return std::exchange(change_, {}); }

    /// Forgets it instead.
    void drop() { change_ = {}; }

private:
    enum class Expect {
        openBrace,
        from,
        fromStringEnd,
        arrow,
        to,
        toStringEnd,
        closeBrace
    };

    ParamDefResult readToken(Cursor& line);
    ParamDefResult readSide(Cursor& line, Expect stringEnd, Expect next);
    ParamDefResult readString(Cursor& line, Expect next);
    void finishSide(const Token& side, Expect next);

    Expect expect_ = Expect::openBrace;
    QuotedString string_;
    ValueChange change_;
};

} // namespace morvane
