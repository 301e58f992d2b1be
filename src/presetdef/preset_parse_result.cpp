#include "presetdef/preset_parse_result.h"

namespace morvane {

std::string_view nameOf(PresetParseResult result) {
    using enum PresetParseResult;
    switch (result) {
    case PARSE_PRESET_CONTINUE:
        return "PARSE_PRESET_CONTINUE";
    case PARSE_PRESET_INTERNAL_ERR:
        break;
    case PARSE_PRESET_OK:
        return "PARSE_PRESET_OK";
    case PARSE_PRESET_ACCESS_ERR:
        return "PARSE_PRESET_ACCESS_ERR";
    case PARSE_PRESET_SYNTAX:
        return "PARSE_PRESET_SYNTAX";
    case PARSE_PRESET_DUPLICATE_ENTRY:
        return "PARSE_PRESET_DUPLICATE_ENTRY";
    case PARSE_PRESET_INVALID_INDEX:
        return "PARSE_PRESET_INVALID_INDEX";
    case PARSE_PRESET_INVALID_RANGE:
        return "PARSE_PRESET_INVALID_RANGE";
    case PARSE_PRESET_INC_EXC_ACCESS_ERR:
        return "PARSE_PRESET_INC_EXC_ACCESS_ERR";
    case PARSE_PRESET_MISSING_IDENTIFIER:
        return "PARSE_PRESET_MISSING_IDENTIFIER";
    case PARSE_PRESET_INVALID_IDENTIFIER:
        return "PARSE_PRESET_INVALID_IDENTIFIER";
    case PARSE_PRESET_INVALID_INTEGER:
        return "PARSE_PRESET_INVALID_INTEGER";
    case PARSE_PRESET_EMPTY_DEFINITION:
        return "PARSE_PRESET_EMPTY_DEFINITION";
    case PARSE_PRESET_IO_ERROR:
        return "PARSE_PRESET_IO_ERROR";
    }
    return "PARSE_PRESET_INTERNAL_ERR";
}

} // namespace morvane
