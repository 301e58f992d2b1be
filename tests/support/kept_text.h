// Texts for records that a test keeps longer than the text they were read from.
#pragma once

#include "text/source_text.h"

#include <string>
#include <string_view>

namespace morvane::test {

/// Keeps texts to the end of the program.
inline SourceText& keptTexts() {
    static SourceText texts;
    return texts;
}

/// A copy of `text` that stays to the end of the program.
inline std::string_view kept(std::string_view text) {
    return keptTexts().keep(std::string(text));
}

} // namespace morvane::test
