// The whole way: two definition files and system arguments become key sets and translation tables,
// and a preset data file becomes entries of today. The parts of the input are separated by "\f\f".

#include "core/preset_manager.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "fuzz_input.h"
#include "text/line_reader.h"

#include <vector>

namespace {

std::vector<std::string_view> partsOf(std::string_view text, std::size_t count) {
    std::vector<std::string_view> parts;
    while (parts.size() + 1 < count) {
        const auto end = std::min(text.find("\f\f"), text.size());
        parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 2, text.size()));
    }
    parts.push_back(text);
    return parts;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane;
    fuzz::silence();
    constexpr std::size_t longest = 4096;
    const auto text = fuzz::textOf(data, size);
    if (size > longest || fuzz::hasHugeNumber(text))
        return 0;
    const auto parts = partsOf(text, 4);
    SystemArguments arguments;
    addSystemArgument(arguments, parts[0]);
    const fuzz::MemoryFile parameters(parts[1]);
    const fuzz::MemoryFile presets(parts[2]);
    const fuzz::MemoryFile stored(parts[3]);
    const PresetManager manager(parameters.path(), presets.path(), arguments);
    PresetEntryList entries;
    const OwnedStream stream(std::fopen(stored.path().c_str(), "r"));
    readPresetFile(stream.get(), entries);
    translateEntries(manager, entries);
    for (const auto& entry : entries)
        manager.in_preset(presetKey(entry), "p");
    return 0;
}
