// The outcome of reading or checking a piece of the preset definition file.
#pragma once

#include <cstdint>
#include <string_view>

namespace morvane {

enum class [[nodiscard]] PresetParseResult : std::int32_t{
    PARSE_PRESET_CONTINUE = -2, ///< the line ended inside the construct; feed the next one
    PARSE_PRESET_INTERNAL_ERR = -1,
    PARSE_PRESET_OK = 0,
    PARSE_PRESET_ACCESS_ERR = 1, ///< not a system parameter
    PARSE_PRESET_SYNTAX = 2,     ///< a character or keyword that cannot stand here
    PARSE_PRESET_DUPLICATE_ENTRY = 3,
    PARSE_PRESET_INVALID_INDEX =
        4, ///< "none" beside selectors; an undefined index, or another parameter's
    PARSE_PRESET_INVALID_RANGE =
        5, ///< a range that ends below its start; a mapping that lacks an index
    PARSE_PRESET_INC_EXC_ACCESS_ERR = 6, ///< an access type that does not fit the kind of list
    PARSE_PRESET_MISSING_IDENTIFIER = 7, ///< a name was required and the word is empty
    PARSE_PRESET_INVALID_IDENTIFIER = 8, ///< a bad header, selector or keyword
    PARSE_PRESET_INVALID_INTEGER = 9,    ///< an index mapping without its count
    PARSE_PRESET_EMPTY_DEFINITION = 10,  ///< a translate section or mapping with nothing in it
    PARSE_PRESET_IO_ERROR = 11,          ///< nothing to read
};

/// The enumerator's name, as it stands in error reports.
std::string_view nameOf(PresetParseResult result);

} // namespace morvane
