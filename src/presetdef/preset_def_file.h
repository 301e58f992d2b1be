// Reads the preset definition file.
#pragma once

#include "presetdef/preset_definition.h"
#include "presetdef/preset_parse_result.h"

#include <cstdio>

namespace morvane {

/// Where the reading of a preset definition file ended early.
struct PresetDefStop {
    SourceText::Place place; ///< after a refused word, at a refused character
    SourceText::Place begin; ///< of the refused word, or of the block that is open at the end
};

/// Reads a stream to its end or to the first error. Blocks completed before the error stay in
/// `definitions`.
///
/// @param stream open for reading; borrowed, stays open.
/// @param stop   receives where an error is.
/// @return PARSE_PRESET_OK or the first error; PARSE_PRESET_CONTINUE when the stream ends inside a
///         block, PARSE_PRESET_IO_ERROR when it has no lines.
PresetParseResult readPresetDefinitions(std::FILE* stream, PresetDefinitions& definitions,
                                        PresetDefStop& stop);

/// Reads the whole file and stops at the first error, which it reports on standard output: the
/// result's name, line number, the line and a caret. Blocks completed before the error stay in
/// `definitions`.
///
/// @param path        may be null, which is PARSE_PRESET_IO_ERROR.
/// @param definitions to be filled; may be null likewise.
/// @return PARSE_PRESET_OK or the first error. Three failures are not reported:
///         PARSE_PRESET_CONTINUE when the file ends inside a block, PARSE_PRESET_IO_ERROR when it
///         cannot be opened or has no lines.
PresetParseResult readPresetDefFile(const char* path, PresetDefinitions* definitions);

} // namespace morvane
