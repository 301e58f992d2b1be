// Reads the parameter definition file into the table of system parameters.
#pragma once

#include "paramdef/param_def_parser.h"
#include "paramdef/param_def_result.h"
#include "paramdef/system_parameter.h"

namespace morvane {

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
