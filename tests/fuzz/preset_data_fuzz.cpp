// Reads any bytes as a preset data file. What was read and is written again reads back the same.

#include "engine/preset_file.h"
#include "fuzz_input.h"
#include "text/line_reader.h"

#include <algorithm>

namespace {

// A line that does not fit into a piece, and a key that ends in white space because an unclosed
// group was dropped from it, read back differently.
bool comesBack(const morvane::PresetEntry& entry) {
    constexpr std::size_t longest = 1000;
    constexpr std::string_view trimmed = "\t\f\v\n\r";
    const bool endsInSpace =
        entry.indices.empty() && trimmed.find(entry.name.back()) != std::string_view::npos;
    return !endsInSpace && formatPresetLine(entry).size() < longest &&
           entry.name.find(']') == std::string_view::npos &&
           std::none_of(entry.indices.begin(), entry.indices.end(), [](std::string_view index) {
               return index.find('[') != std::string_view::npos;
           });
}

/// The entries of a file that come back, each as its line.
std::vector<std::string> read(const std::string& path) {
    std::vector<std::string> lines;
    const morvane::OwnedStream stream(std::fopen(path.c_str(), "r"));
    morvane::readPresetFile(stream.get(), [&](const morvane::PresetEntry& entry) {
        if (comesBack(entry))
            lines.push_back(formatPresetLine(entry));
    });
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane;
    const test::MemoryFile file(fuzz::textOf(data, size));
    const auto lines = read(file.path());
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    const test::MemoryFile again(text);
    if (read(again.path()) != lines)
        __builtin_trap();
    return 0;
}
