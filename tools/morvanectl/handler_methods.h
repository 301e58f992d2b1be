// The methods of the Parameter Handler, with what they take and return.
#pragma once

#include "transaction.h"

#include <array>
#include <string_view>

namespace morvane::ctl {

struct HandlerMethod {
    std::string_view name;
    const char* takes;   ///< as a D-Bus type
    const char* returns; ///< as a D-Bus type
    Target target = Target::value;

    /// Whether it acts in the transaction that its first argument is.
    constexpr bool isInTransaction() const { return takes[1] == 'u' && !isSingle(); }
    constexpr bool isSingle() const { return name.starts_with("single_"); }
    constexpr bool isBulk() const { return name.ends_with("_bulk"); }

    /// Whether it changes something: sets or resets.
    constexpr bool writes() const {
        const auto plain = name.substr(isSingle() ? std::string_view("single_").size() : 0);
        return plain.starts_with("set") || plain.starts_with("reset");
    }
    constexpr bool resets() const { return name.find("reset") != std::string_view::npos; }
};

constexpr std::array handlerMethods{
    HandlerMethod{"start", "()", "(u)"},
    HandlerMethod{"end", "(u)", "()"},
    HandlerMethod{"commit", "(u)", "()"},
    HandlerMethod{"get", "(us)", "(s)"},
    HandlerMethod{"single_get", "(s)", "(s)"},
    HandlerMethod{"get_bulk", "(uuas)", "(as)"},
    HandlerMethod{"single_get_bulk", "(uas)", "(as)"},
    HandlerMethod{"set", "(uss)", "()"},
    HandlerMethod{"single_set", "(ss)", "()"},
    HandlerMethod{"set_bulk", "(uasas)", "()"},
    HandlerMethod{"single_set_bulk", "(asas)", "()"},
    HandlerMethod{"set_status", "(uss)", "()", Target::status},
    HandlerMethod{"single_set_status", "(ss)", "()", Target::status},
    HandlerMethod{"set_status_bulk", "(uasas)", "()", Target::status},
    HandlerMethod{"single_set_status_bulk", "(asas)", "()", Target::status},
    HandlerMethod{"check_set", "(uss)", "(b)"},
    HandlerMethod{"single_check_set", "(ss)", "(b)"},
    HandlerMethod{"reset", "(us)", "()"},
    HandlerMethod{"single_reset", "(s)", "()"},
    HandlerMethod{"reset_bulk", "(uas)", "()"},
    HandlerMethod{"single_reset_bulk", "(as)", "()"},
    HandlerMethod{"reset_status", "(us)", "()", Target::status},
    HandlerMethod{"single_reset_status", "(s)", "()", Target::status},
    HandlerMethod{"reset_status_bulk", "(uas)", "()", Target::status},
    HandlerMethod{"single_reset_status_bulk", "(as)", "()", Target::status},
};

/// @param name of one of the methods.
constexpr const HandlerMethod& handlerMethod(std::string_view name) {
    const auto* row = handlerMethods.begin();
    while (row->name != name)
        ++row;
    return *row;
}

} // namespace morvane::ctl
