#include "paramdef/param_def_result.h"

namespace morvane {

std::string_view message(ParamDefResult result) {
    switch (result) {
    case ParamDefResult::internalError:
        return "Internal error\n";
    case ParamDefResult::invalidAccess:
        return "Invalid parameter access type\n";
    case ParamDefResult::syntaxError:
        return "Syntax error\n";
    case ParamDefResult::ok:
    case ParamDefResult::incomplete:
        break;
    }
    return "Unknown error\n";
}

} // namespace morvane
