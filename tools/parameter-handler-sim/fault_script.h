// A script of faults: on which calls the simulator misbehaves, and how. Independent of D-Bus.
//
// One fault per line, blanks between the words; blank lines and lines that begin with "#" are
// skipped:
//
//   METHOD WHEN ACTION [ARGUMENT]
//
//   METHOD  a method's name, such as get_bulk, or * for every method
//   WHEN    which of the calls of METHOD: a number from 1, a span such as 2-5, or always
//   ACTION  error TEXT      answer with an error of that message
//           delay MS        answer as usual, MS milliseconds later
//           no-reply        carry the call out and never answer
//           drop-name [MS]  give the bus name up, then answer; take it back after MS
//                           milliseconds or never
//           exit            end the simulator without an answer
//           fewer-values    leave one value out of the answer
//           more-values     add one value to the answer
//           wrong-type      answer with a number where something else is expected
//
// The first line that matches a call counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::sim {

struct Fault {
    enum class Action {
        error,
        delay,
        noReply,
        dropName,
        exit,
        fewerValues,
        moreValues,
        wrongType,
    };

    std::string method;      ///< "*" for every method
    std::uint64_t first = 1; ///< the calls of the method that it applies to
    std::uint64_t last = UINT64_MAX;
    Action action = Action::error;
    std::string text;                          ///< of an error
    std::optional<std::uint32_t> milliseconds; ///< of a delay or a dropped name
};

class FaultScript {
public:
    /// Reads a whole script.
    /// @param isMethod whether there is a method of that name.
    /// @return what is wrong with it, with the line's number; nothing if it was read.
    std::optional<std::string> read(std::istream& script,
                                    const std::function<bool(std::string_view)>& isMethod);

    /// Counts a call of `method`.
    /// @return the fault for it, or null; valid as long as the script.
    const Fault* next(const std::string& method);

private:
    std::vector<Fault> faults_;
    std::map<std::string, std::uint64_t> calls_;
};

} // namespace morvane::sim
