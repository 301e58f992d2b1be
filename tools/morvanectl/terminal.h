// What is known of the terminals that std::cout and std::cerr go to: their sizes, and whether they
// take colours.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace morvane::ctl {

enum class Colour {
    red,
    green,
    yellow,
    magenta,
    cyan
};

/// Puts a text into bold letters of a colour if the stream is std::cout or std::cerr, which goes to
/// a terminal, and the environment does not refuse colours: with a NO_COLOR that is not empty, or a
/// TERM that is "dumb" or missing.
std::string coloured(std::string_view text, Colour colour, const std::ostream& stream);

struct TerminalSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
};

/// The size of the terminal that std::cout goes to, or a usual one if it does not tell.
/// @return nothing without a terminal.
std::optional<TerminalSize> terminalSize();

} // namespace morvane::ctl
