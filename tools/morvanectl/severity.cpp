#include "severity.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace morvane::ctl {

namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

bool isTerminal(const std::ostream& stream) {
    return (&stream == &std::cout && isatty(STDOUT_FILENO) != 0) ||
           (&stream == &std::cerr && isatty(STDERR_FILENO) != 0);
}

bool takesColours(const std::ostream& stream) {
    const auto terminal = environment("TERM");
    return environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb" &&
           isTerminal(stream);
}

// Bold, in the colours that compilers use.
const char* escapeSequenceOf(Severity severity) {
    switch (severity) {
    case Severity::error:
        return "\033[1;31m"; // red
    case Severity::warning:
        return "\033[1;35m"; // magenta
    case Severity::note:
        break;
    }
    return "\033[1;36m"; // cyan
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
    std::string all(text);
    return takesColours(stream) ? escapeSequenceOf(severity) + all + "\033[0m" : all;
}

std::string label(Severity severity, const std::ostream& stream) {
    return coloured(std::string(nameOf(severity)) + ":", severity, stream) + " ";
}

} // namespace morvane::ctl
