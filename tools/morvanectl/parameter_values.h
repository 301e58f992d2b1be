// Reads live values from the Parameter Handler, and shows them.
#pragma once

#include "bus_client.h"
#include "output.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// Values in the order of their keys, or why there are none.
struct LiveValues {
    std::vector<std::string> texts;
    std::string error; ///< empty if they were read
};

/// Reads the values of all keys in one call.
LiveValues readLiveValues(const BusClient& bus, const std::vector<std::string>& keys);

/// Finds the keys for which a bulk call was refused, whose error need not name them.
///
/// @param error     of the bulk call.
/// @param callAlone does the same for the key of that number by itself, and returns its error.
/// @param use       gets each key that is refused by itself, with its error.
/// @return the error of a call that was no refusal, or of the bulk call if no key is refused by
///         itself; else empty.
std::string findRefused(const std::vector<std::string>& keys, const std::string& error,
                        const std::function<std::string(std::size_t)>& callAlone,
                        const std::function<void(std::size_t, const std::string&)>& use);

/// "KEY=VALUE", on one line: control characters are "\xNN".
std::string valueLine(std::string_view key, std::string_view value);

/// An object of "key" and "value", in which nothing is replaced.
Json valueObject(std::string_view key, std::string_view value);

} // namespace morvane::ctl
