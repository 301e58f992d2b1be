#include "problem.h"

#include <iostream>

namespace morvane::ctl {

ExitStatus fail(std::string_view problem) {
    note(problem);
    return ExitStatus::error;
}

void note(std::string_view text) {
    std::cerr << "morvanectl: " << text << std::endl;
}

} // namespace morvane::ctl
