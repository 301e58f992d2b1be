// bare_reader: the least that reading definitions can cost with the containers of the standard
// library. Reads both definition files line by line, counts each word in a map, and puts the keys
// of the presets into a set.
//
// Usage: bare_reader PARAMETERS PRESETS KEYS
//
// KEYS has the keys of all presets, one a line. Stops when it is done, to be looked at and killed.

#include "text/line_reader.h"

#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace {

using namespace morvane;

/// Hands each line of a file to `take`.
template <typename Take>
void readFile(const char* path, Take take) {
    const OwnedStream stream(std::fopen(path, "r"));
    if (!stream) {
        std::fprintf(stderr, "bare_reader: cannot read %s\n", path);
        std::exit(EXIT_FAILURE);
    }
    LineReader<512> lines(stream.get());
    while (const auto line = lines.next())
        take(*line);
}

bool isSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

void countWords(std::string_view line, std::map<std::string, unsigned, std::less<>>& words) {
    for (std::size_t at = 0; at < line.size();) {
        std::size_t end = at;
        while (end < line.size() && !isSpace(line[end]))
            ++end;
        if (end > at)
            ++words.try_emplace(std::string(line.substr(at, end - at))).first->second;
        at = end + 1;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: bare_reader PARAMETERS PRESETS KEYS\n", stderr);
        return EXIT_FAILURE;
    }
    std::map<std::string, unsigned, std::less<>> words;
    for (const char* const path : {argv[1], argv[2]})
        readFile(path, [&](std::string_view line) { countWords(line, words); });
    std::set<std::string> keys;
    readFile(argv[3], [&](std::string_view line) {
        line.remove_suffix(line.ends_with('\n') ? 1 : 0);
        keys.emplace(line);
    });
    // The daemon, which is killed when it has its name, frees none of its tables either.
    if (!words.empty() && !keys.empty())
        std::raise(SIGSTOP);
    std::_Exit(EXIT_FAILURE);
}
