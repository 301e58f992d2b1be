// Reads the parameter definition file into the table of system parameters.
#pragma once

#include "paramdef/param_def_parser.h"
#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"

#include <cstdio>
#include <optional>

namespace morvane {

/// Why a parameter definition file is not complete.
struct ParamDefError {
    ParamDefResult result = ParamDefResult::incomplete; ///< which is: it ends inside a block
    SourceText::Place place{};  ///< of the token that could not be read, or of the open block
    ParamDefParseState state{}; ///< what was expected next
};

/// Reads a stream to its end or to the first error. What was read before the error stays in
/// `table`.
///
/// @param stream open for reading; borrowed, stays open.
/// @param kept   which attributes to fill the table with.
/// @return nothing if there is no error and no block is open at the end.
std::optional<ParamDefError> readParamDefinitions(std::FILE* stream, SystemParameterTable& table,
                                                  KeptAttributes kept);

/// Reads the whole file and stops at the first error, which it reports on standard output: line
/// number, message, the line and a caret. What was read before the error stays in `table`. A file
/// that ends inside a block is accepted.
///
/// @param path  may be null, which is internalError without a report.
/// @param table to be filled; may be null likewise.
/// @param kept  which attributes to fill it with.
/// @return ok or the first error; internalError also when the file cannot be opened, which is
///         reported, and when it has no lines, which is not.
ParamDefResult readParamDefFile(const char* path, SystemParameterTable* table,
                                KeptAttributes kept = KeptAttributes::all);

} // namespace morvane
