// Makes the strings that a get hands out.
#pragma once

#include "text/c_string_view.h"

#include <string>
#include <utility>
#include <vector>

namespace morvane::test {

/// Strings with an owner, like those of a reply from the bus.
inline ReceivedStrings receivedStrings(std::vector<std::string> texts) {
    struct Reply {
        std::vector<std::string> texts;
        std::vector<const char*> pointers;
    };
    auto* const reply = new Reply{std::move(texts), {}};
    for (const auto& text : reply->texts)
        reply->pointers.push_back(text.c_str());
    return {{reply, [](void* owner) { delete static_cast<Reply*>(owner); }}, reply->pointers};
}

/// Copies of received strings.
inline std::vector<std::string> copied(const ReceivedStrings& strings) {
    return {strings.texts.begin(), strings.texts.end()};
}

} // namespace morvane::test
