#include "text/diagnostic.h"

#include <cstdio>
#include <string>

namespace morvane {

void printAtOnce(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void printWithCaret(std::string_view heading, std::string_view line, std::uint32_t column) {
    std::string text(heading);
    text += line;
    if (!line.ends_with('\n'))
        text += '\n';
    text.append(column, ' ');
    text += "^\n";
    printAtOnce(text);
}

} // namespace morvane
