#include "presetdef/preset_def_file.h"

#include "presetdef/preset_def_parser.h"
#include "text/diagnostic.h"
#include "text/line_reader.h"

#include <cstdint>
#include <string>

namespace morvane {

using enum PresetParseResult;

namespace {

void printError(PresetParseResult result, const SourceText& text, SourceText::Place place) {
    std::string heading(nameOf(result));
    heading += " Error on line " + std::to_string(place.line) + "\n";
    printWithCaret(heading, *text.line(place.line), place.column);
}

} // namespace

PresetParseResult readPresetDefinitions(std::FILE* stream, PresetDefinitions& definitions,
                                        PresetDefStop& stop) {
    PresetDefParser parser;
    auto result = PARSE_PRESET_IO_ERROR;
    SourceText::Place place{1, 0};
    for (; const auto line = definitions.text->readLine(stream); ++place.line) {
        result = parser.parsePresetDefLine(definitions, place.column, *line, place.line);
        if (result != PARSE_PRESET_OK && result != PARSE_PRESET_CONTINUE) {
            stop = {place, {place.line, parser.errorBegin()}};
            return result;
        }
    }
    if (result == PARSE_PRESET_CONTINUE)
        stop.begin = definitions.text->placeOf(parser.blockBegin()).value_or(place);
    return result;
}

PresetParseResult readPresetDefFile(const char* path, PresetDefinitions* definitions) {
    if (path == nullptr || definitions == nullptr)
        return PARSE_PRESET_IO_ERROR;
    const OwnedStream stream(std::fopen(path, "r"));
    if (!stream)
        return PARSE_PRESET_IO_ERROR;
    PresetDefStop stop;
    const auto result = readPresetDefinitions(stream.get(), *definitions, stop);
    if (result != PARSE_PRESET_OK && result != PARSE_PRESET_CONTINUE &&
        result != PARSE_PRESET_IO_ERROR)
        printError(result, *definitions->text, stop.place);
    return result;
}

} // namespace morvane
