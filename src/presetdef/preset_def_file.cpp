#include "presetdef/preset_def_file.h"

#include "presetdef/preset_def_parser.h"
#include "text/diagnostic.h"
#include "text/line_reader.h"

#include <cstdint>
#include <string>

namespace morvane {

using enum PresetParseResult;

namespace {

void printError(PresetParseResult result, std::string_view line, std::uint32_t lineNumber,
                std::uint32_t column) {
    std::string heading(nameOf(result));
    heading += " Error on line " + std::to_string(lineNumber) + "\n";
    printWithCaret(heading, line, column);
}

} // namespace

PresetParseResult readPresetDefFile(const char* path, PresetDefinitions* definitions) {
    if (path == nullptr || definitions == nullptr)
        return PARSE_PRESET_IO_ERROR;
    const OwnedStream stream(std::fopen(path, "r"));
    if (!stream)
        return PARSE_PRESET_IO_ERROR;
    PresetDefParser parser;
    PresetParseResult result = PARSE_PRESET_IO_ERROR;
    std::uint32_t lineNumber = 1;
    std::uint32_t errorColumn = 0;
    while (const auto line = definitions->text->readLine(stream.get())) {
        result = parser.parsePresetDefLine(*definitions, errorColumn, *line, lineNumber);
        if (result != PARSE_PRESET_OK && result != PARSE_PRESET_CONTINUE) {
            printError(result, *line, lineNumber, errorColumn);
            break;
        }
        ++lineNumber;
    }
    return result;
}

} // namespace morvane
