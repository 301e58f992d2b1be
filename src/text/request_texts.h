// The strings of a request to the Parameter Handler, as its parts hand them to each other.
#pragma once

#include "text/c_string_view.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace morvane {

/// What is set: a key and its new value.
using KeyValue = std::pair<CStringView, CStringView>;

/// Everything that one request sends, by operation. All of it is borrowed.
struct RequestTexts {
    std::string_view origin; ///< the file of a load, or the preset; for the log
    std::span<const std::string> get = {};
    std::span<const KeyValue> set = {};
    std::span<const KeyValue> setStatus = {};
    std::span<const CStringView> reset = {};
    std::span<const CStringView> resetStatus = {};
};

} // namespace morvane
