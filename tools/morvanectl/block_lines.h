// Where the parameter definition file defines a parameter: the lines of its blocks.
#pragma once

#include "text/source_text.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace morvane::ctl {

/// By name of a parameter or index: the numbers of the lines that its blocks stand on, in order. A
/// line with several blocks is there for each. The names are views of the text.
using BlockLines = std::unordered_map<std::string_view, std::vector<std::uint32_t>>;

/// @param text of a parameter definition file that was read without an error.
BlockLines blockLines(const SourceText& text);

/// Lines that follow each other.
struct Excerpt {
    std::uint32_t line = 0; ///< the first
    std::string text;       ///< without the last line feed

    bool operator==(const Excerpt&) const = default;
};

/// @param lines numbers of lines that the text has, in order.
std::vector<Excerpt> excerpts(const SourceText& text, const std::vector<std::uint32_t>& lines);

} // namespace morvane::ctl
