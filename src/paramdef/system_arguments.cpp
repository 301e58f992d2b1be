#include "paramdef/system_arguments.h"

#include <string>

namespace morvane {

bool addSystemArgument(SystemArguments& arguments, std::string_view argument) {
    const auto equals = argument.find('=');
    if (equals == std::string_view::npos)
        return false;
    arguments.try_emplace(std::string(argument.substr(0, equals)), argument.substr(equals + 1));
    return true;
}

} // namespace morvane
