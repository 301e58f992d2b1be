// Pages for a browser: what they have in common, and how one is written.
#pragma once

#include "block_lines.h"
#include "described_variants.h"
#include "output.h"
#include "page_template.h"
#include "text/source_text.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace morvane::ctl {

/// Numbers texts from 0, equal ones once.
class Numbering {
public:
    /// @return the number of the text, and whether it is new.
    std::pair<std::size_t, bool> add(const std::string& text);

private:
    std::unordered_map<std::string, std::size_t> numbers_;
};

/// The lines that define a parameter or index, as [{line, text}]; none if nothing does.
/// @param lines of that text.
Json blocksOf(std::string_view name, const SourceText& text, const BlockLines& lines);

/// The name of a variant and the arguments that it stands for, as {name, arguments}.
Json jsonOf(const DescribedVariant& variant);

/// Writes one file that needs no other and no network. Fails if it would have more than 20 MB.
///
/// @param less what makes it smaller, for the message that it is too big.
/// @return yes, or error with a message on standard error.
ExitStatus writePage(const std::string& file, const PageTemplate& page, const Json& data,
                     std::string_view less, const Messages& messages);

} // namespace morvane::ctl
