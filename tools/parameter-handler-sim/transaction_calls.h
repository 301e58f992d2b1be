// Carries out the calls of the transaction interface on a value store. Uses GVariant, but no bus.
#pragma once

#include "value_store.h"

#include <glib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace morvane::sim {

/// What came of a call.
struct Outcome {
    Refusal refusal; ///< if set, nothing else counts

    /// What the method hands back, if anything.
    std::variant<std::monostate, std::uint32_t, bool, std::string, std::vector<std::string>> result;

    /// After a commit: the keys whose values changed, for the signal.
    std::optional<std::vector<std::string>> changed;
};

/// Whether the interface has a method of that name.
bool isMethod(std::string_view name);

/// Carries out one call.
///
/// @param method     one of the interface's methods.
/// @param parameters of that method's type; borrowed.
Outcome perform(ValueStore& values, std::string_view method, GVariant* parameters);

/// The body of the reply for a result.
/// @return a floating reference to a tuple.
GVariant* replyBody(const Outcome& outcome);

} // namespace morvane::sim
