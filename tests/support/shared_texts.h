// Makes the texts that a get hands out.
#pragma once

#include "text/borrowed_text.h"

#include <string>
#include <utility>
#include <vector>

namespace morvane::test {

/// Texts that keep themselves, as those of a reply from the bus do.
inline SharedTexts sharedTexts(std::vector<std::string> texts) {
    struct Kept {
        std::vector<std::string> texts;
        std::vector<const char*> pointers;
    };
    const auto kept = std::make_shared<Kept>();
    kept->texts = std::move(texts);
    for (const auto& text : kept->texts)
        kept->pointers.push_back(text.c_str());
    return {kept, kept->pointers};
}

/// Copies of shared texts.
inline std::vector<std::string> copied(const SharedTexts& shared) {
    return {shared.texts.begin(), shared.texts.end()};
}

} // namespace morvane::test
