#include "terminal.h"

#include <sys/ioctl.h>
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
const char* escapeSequenceOf(Colour colour) {
    switch (colour) {
    case Colour::red:
        return "\033[1;31m";
    case Colour::green:
        return "\033[1;32m";
    case Colour::yellow:
        return "\033[1;33m";
    case Colour::magenta:
        return "\033[1;35m";
    case Colour::cyan:
        break;
    }
    return "\033[1;36m";
}

} // namespace

std::string coloured(std::string_view text, Colour colour, const std::ostream& stream) {
    std::string all(text);
    return takesColours(stream) ? escapeSequenceOf(colour) + all + "\033[0m" : all;
}

std::optional<TerminalSize> terminalSize() {
    if (!isTerminal(std::cout))
        return std::nullopt;
    TerminalSize size;
    winsize told{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &told) == 0) {
        size.columns = told.ws_col == 0 ? size.columns : told.ws_col;
        size.rows = told.ws_row == 0 ? size.rows : told.ws_row;
    }
    return size;
}

} // namespace morvane::ctl
