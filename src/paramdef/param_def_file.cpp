#include "paramdef/param_def_file.h"

#include "text/diagnostic.h"
#include "text/line_reader.h"

#include <cstdint>
#include <string>

namespace morvane {

namespace {

void printError(const ParamDefError& error, const SourceText& text) {
    const auto& [line, column] = error.place;
    std::string heading = "Error on line " + std::to_string(line) + "\n";
    heading += message(error.result);
    printWithCaret(heading, *text.line(line), column);
}

// Parses one line after the other, up to the first error.
//
// nextLine is given the number of a line.
template <typename NextLine>
std::optional<ParamDefError> parseLines(ParamDefParser& parser, SystemParameterTable& table,
                                        NextLine nextLine) {
    SourceText::Place place{1, 0};
    for (; const auto line = nextLine(place.line); ++place.line) {
        const auto result = parser.parseParamDefLine(table, place.column, *line, place.line);
        if (result != ParamDefResult::ok)
            return ParamDefError{result, place, parser.state()};
    }
    if (parser.state() == ParamDefParseState::expectName)
        return std::nullopt;
    const auto block = table.text().placeOf(parser.blockName());
    return ParamDefError{ParamDefResult::incomplete, block.value_or(place), parser.state()};
}

} // namespace

std::optional<ParamDefError> readParamDefinitions(std::FILE* stream, SystemParameterTable& table,
                                                  KeptAttributes kept) {
    auto& text = table.text();
    ParamDefParser parser(kept);
    auto error = parseLines(parser, table, [&](std::uint32_t) { return text.readLine(stream); });
    if (!parser.lacksRanges())
        return error;
    // Once more, from memory: the file may be a pipe.
    table.clear();
    ParamDefParser keeper(KeptAttributes::all);
    return parseLines(keeper, table, [&](std::uint32_t number) { return text.line(number); });
}

ParamDefResult readParamDefFile(const char* path, SystemParameterTable* table,
                                KeptAttributes kept) {
    if (path == nullptr || table == nullptr)
        return ParamDefResult::internalError;
    const OwnedStream stream(std::fopen(path, "r"));
    if (!stream) {
        printAtOnce("Can't open file\n");
        return ParamDefResult::internalError;
    }
    const auto error = readParamDefinitions(stream.get(), *table, kept);
    if (error && error->result != ParamDefResult::incomplete) {
        printError(*error, table->text());
        return error->result;
    }
    return table->text().lineCount() > 0 ? ParamDefResult::ok : ParamDefResult::internalError;
}

} // namespace morvane
