// Texts of the definition languages in all the layouts that mean the same.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvane::test {

/// The lines of `text`, each with its line feed; borrows from `text`.
std::vector<std::string_view> linesOf(std::string_view text);

/// The text without its "@".
std::string withoutMark(std::string_view row);

/// `row` in one line, with a line break at each of its blanks in turn, with line breaks at all of
/// them, and with other white space at all of them. The "@" stays; a "~" becomes a blank that is a
/// blank in every layout.
std::vector<std::string> layoutsOf(std::string_view row);

} // namespace morvane::test
