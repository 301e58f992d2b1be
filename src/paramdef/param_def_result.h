// The outcome of reading a piece of the parameter definition file.
#pragma once

#include <cstdint>
#include <string_view>

namespace morvane {

enum class [[nodiscard]] ParamDefResult : std::int32_t{
    incomplete = -2,    ///< the line ended inside the construct; feed the next one
    internalError = -1, ///< the parameter being read is gone, or there was nothing to read
    ok = 0,
    invalidAccess = 1, ///< an access type that does not exist, or that an attribute forbids
    syntaxError = 2,
};

/// The message for a result in an error report, line feed included.
std::string_view message(ParamDefResult result);

} // namespace morvane
