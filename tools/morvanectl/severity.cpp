#include "severity.h"

#include "terminal.h"

namespace morvane::ctl {

namespace {

Colour colourOf(Severity severity) {
    switch (severity) {
    case Severity::error:
        return Colour::red;
    case Severity::warning:
        return Colour::magenta;
    case Severity::note:
        break;
    }
    return Colour::cyan;
}

} // namespace

const char* nameOf(Severity severity) {
    switch (severity) {
    case Severity::error:
        return "error";
    case Severity::warning:
        return "warning";
    case Severity::note:
        break;
    }
    return "note";
}

std::string coloured(std::string_view text, Severity severity, const std::ostream& stream) {
    return coloured(text, colourOf(severity), stream);
}

std::string label(Severity severity, const std::ostream& stream) {
    return coloured(std::string(nameOf(severity)) + ":", severity, stream) + " ";
}

} // namespace morvane::ctl
