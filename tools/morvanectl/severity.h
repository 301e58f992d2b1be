// How serious a message is: the word for it, and its colour on a terminal.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace morvane::ctl {

enum class Severity {
    error,
    warning,
    note
};

/// The severity's name, as it stands in findings.
const char* nameOf(Severity severity);

/// Puts a text into the colour of a severity, if the stream takes colours; see terminal.h.
std::string coloured(std::string_view text, Severity severity, const std::ostream& stream);

/// The severity's name as the beginning of a message, such as "error: ", in its colour.
std::string label(Severity severity, const std::ostream& stream);

} // namespace morvane::ctl
