// Stands in for the Parameter Handler inside a test program.
#pragma once

#include "engine/parameter_operations.h"

#include <map>
#include <string>
#include <vector>

namespace morvane::test {

/// Records the operations that the engine calls, answers gets from `values`, and refuses as often
/// as it is told to.
class ParameterRecorder {
public:
    std::map<std::string, std::string> values; ///< by key; others are read as "?"
    std::map<std::string, int> refusals;       ///< by operation: how often it still refuses

    bool refusesToSend = false; ///< what `isSendable` answers
    /// What `isSendable` was asked, such as "scene: a b" or "/p: a=1 b=2".
    std::vector<std::string> checks;

    /// The calls so far, in order, such as "parm_get 7 a b" or "parm_set 7 a=1 b=2"; a refused call
    /// ends with " refused".
    std::vector<std::string> calls;

    /// The operations; the recorder must outlive them.
    ParameterOperations operations();

private:
    bool record(const std::string& operation, const std::string& arguments);
};

} // namespace morvane::test
