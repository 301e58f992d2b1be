#include "presetdef/validation_report.h"

#include "text/report.h"

#include <string>

namespace morvane {

PresetParseResult reportInvalid(std::uint32_t line, std::string_view text,
                                PresetParseResult result) {
    std::string message = "Preset Definition Error on line " + std::to_string(line) + ".\n";
    message += text;
    message += '\n';
    report(message);
    return result;
}

} // namespace morvane
