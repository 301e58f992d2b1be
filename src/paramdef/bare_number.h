// A number without quotes in the parameter definition file.
#pragma once

#include "paramdef/expression.h"
#include "paramdef/param_def_result.h"

namespace morvane {

class CharacterSet;
class Cursor;

/// Reads the word at the cursor as a number.
///
/// @param delimiters what ends the word beside white space.
/// @param token      becomes a TOKEN_NUMBER.
/// @return ok; syntaxError for an empty word, or for one that is not a number to its end, with the
///         cursor's mark moved to the first byte that is not part of the number.
ParamDefResult readBareNumber(Cursor& line, const CharacterSet& delimiters, Token& token);

} // namespace morvane
