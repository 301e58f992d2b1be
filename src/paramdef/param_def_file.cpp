#include "paramdef/param_def_file.h"

#include "text/diagnostic.h"
#include "text/line_reader.h"

#include <cstdint>
#include <string>

namespace morvane {

namespace {

void printError(ParamDefResult result, std::string_view line, std::uint32_t lineNumber,
                std::uint32_t column) {
    std::string heading = "Error on line " + std::to_string(lineNumber) + "\n";
    heading += message(result);
    printWithCaret(heading, line, column);
}

} // namespace

ParamDefResult readParamDefFile(const char* path, SystemParameterTable* table,
                                KeptAttributes kept) {
    if (path == nullptr || table == nullptr)
        return ParamDefResult::internalError;
    const OwnedStream stream(std::fopen(path, "r"));
    if (!stream) {
        printAtOnce("Can't open file\n");
        return ParamDefResult::internalError;
    }
    ParamDefParser parser(kept);
    ParamDefResult result = ParamDefResult::internalError;
    std::uint32_t lineNumber = 1;
    std::uint32_t errorColumn = 0;
    while (const auto line = table->text().readLine(stream.get())) {
        result = parser.parseParamDefLine(*table, errorColumn, *line, lineNumber);
        if (result != ParamDefResult::ok) {
            printError(result, *line, lineNumber, errorColumn);
            break;
        }
        ++lineNumber;
    }
    return result;
}

} // namespace morvane
