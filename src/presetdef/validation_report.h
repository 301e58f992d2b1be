// The message about a definition that was read but does not fit the system parameters.
#pragma once

#include "presetdef/preset_parse_result.h"

#include <cstdint>
#include <string_view>

namespace morvane {

/// Writes the message to standard output.
///
/// @param line   of the record that is wrong.
/// @param text   what is wrong with it, without a line feed.
/// @param result handed back, so that a check can end with the report.
PresetParseResult reportInvalid(std::uint32_t line, std::string_view text,
                                PresetParseResult result);

} // namespace morvane
