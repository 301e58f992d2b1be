// Reads any bytes as a preset data file. What was read and is written again reads back the same.

#include "engine/preset_file.h"
#include "fuzz_input.h"
#include "text/line_reader.h"

#include <algorithm>

namespace {

morvane::PresetEntryList read(const std::string& path) {
    morvane::PresetEntryList entries;
    const morvane::OwnedStream stream(std::fopen(path.c_str(), "r"));
    morvane::readPresetFile(stream.get(), entries);
    return entries;
}

// A line that does not fit into a piece, and a key that ends in white space since an unclosed group
// was dropped from it, are others when they are read again.
bool comesBack(const morvane::PresetEntry& entry) {
    constexpr std::size_t longest = 1000;
    constexpr std::string_view trimmed = "\t\f\v\n\r";
    const bool endsInSpace =
        entry.indices.empty() && trimmed.find(entry.name.back()) != std::string_view::npos;
    return !endsInSpace && morvane::formatPresetLine(entry).size() < longest &&
           entry.name.find(']') == std::string::npos &&
           std::none_of(entry.indices.begin(), entry.indices.end(), [](const std::string& index) {
               return index.find('[') != std::string::npos;
           });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane;
    const test::MemoryFile file(fuzz::textOf(data, size));
    auto entries = read(file.path());
    std::erase_if(entries, [](const PresetEntry& entry) { return !comesBack(entry); });
    std::string text;
    for (const auto& entry : entries)
        text += formatPresetLine(entry) + "\n";
    const test::MemoryFile again(text);
    if (read(again.path()) != entries)
        __builtin_trap();
    return 0;
}
