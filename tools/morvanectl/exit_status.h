// How morvanectl ends. Part of its interface: scripts ask.
#pragma once

namespace morvane::ctl {

enum class ExitStatus : int {
    yes = 0,   ///< yes, same, done, nothing to complain about
    no = 1,    ///< no, different, warnings
    error = 2, ///< the question could not be answered
};

} // namespace morvane::ctl
