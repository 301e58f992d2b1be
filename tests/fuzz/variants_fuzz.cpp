// Reads any bytes as a list of named variants, and as an environment file. A list that can be read,
// written again with its arguments quoted, reads back the same.

#include "argument_files.h"
#include "fuzz_input.h"

#include <string>
#include <vector>

namespace {

using Variants = std::vector<morvane::ctl::NamedVariant>;

// A backslash makes any character an ordinary one.
std::string quoted(const std::string& argument) {
    std::string text;
    for (const char c : argument)
        text.append(1, '\\').append(1, c);
    return text;
}

// Line by line, as they were read.
std::string written(const Variants& variants) {
    std::string text;
    std::uint32_t line = 1;
    for (const auto& variant : variants) {
        text.append(variant.line - line, '\n').append(variant.name).append(":");
        for (const auto& argument : variant.arguments)
            text.append(" ").append(quoted(argument));
        line = variant.line;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane::ctl;
    const auto text = morvane::fuzz::textOf(data, size);
    Variants variants;
    const bool isList = !parseVariants(text, variants);
    Variants again;
    if (isList && (parseVariants(written(variants), again) || again != variants))
        __builtin_trap();
    if (const auto value = environmentValue(text, "MORVANE_SYSTEM_ARGUMENTS"))
        commandLineWords(*value);
    return 0;
}
