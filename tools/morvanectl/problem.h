// The one place where morvanectl writes about what went wrong.
#pragma once

#include "exit_status.h"

#include <string_view>

namespace morvane::ctl {

/// Writes a line about a problem to standard error, behind the program's name.
/// @return ExitStatus::error, so that a command can end with it.
ExitStatus fail(std::string_view problem);

/// Writes a line to standard error that is no problem, such as what is waited for.
void note(std::string_view text);

} // namespace morvane::ctl
