// Error reports about definition files, on standard output. The system log never sees them.
#pragma once

#include <cstdint>
#include <string_view>

namespace morvane {

/// Writes `text` to standard output at once: whatever stayed in the stream's buffer would be lost
/// when the daemon detaches and its streams go to the null device.
void printAtOnce(std::string_view text);

/// Writes `heading`, the line as read, a line feed unless the line ends in one, and a caret under
/// byte `column` of the line.
void printWithCaret(std::string_view heading, std::string_view line, std::uint32_t column);

} // namespace morvane
