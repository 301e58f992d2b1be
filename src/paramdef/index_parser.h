// The part of an `index` attribute after its keyword.
#pragma once

#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"

#include <utility>

namespace morvane {

class Cursor;

/// Reads `{ name, name }`, over as many lines as it takes.
class IndexParser {
public:
    /// @return ok when the closing brace was consumed.
    ParamDefResult parse(Cursor& line);

    /// Hands over the dimension that was read and starts again with an empty one.
    IndexDimension take() { return std::exchange(dimension_, {}); }

private:
    enum class Expect {
        openBrace,
        name,
        commaOrClose
    };

    ParamDefResult readToken(Cursor& line);
    ParamDefResult readName(Cursor& line);

    Expect expect_ = Expect::openBrace;
    IndexDimension dimension_;
};

} // namespace morvane
