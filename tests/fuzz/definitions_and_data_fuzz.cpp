// End to end: two definition files and system arguments become key sets and translation tables, and
// a preset data file becomes current entries. The parts of the input are separated by "\f\f".

#include "core/definitions.h"
#include "core/preset_manager.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "fuzz_input.h"
#include "tables/valid_values.h"
#include "text/line_reader.h"

#include <algorithm>
#include <vector>

namespace {

using namespace morvane;

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

/// Inputs that stand for more keys are skipped: a few lines may have twelve dimensions of seven
/// values, which are more keys than any machine has memory for. That is no fault.
constexpr double maxKeys = 1'000'000;

double countValues(const SystemParameter& index, const Definitions& definitions,
                   const SystemArguments& arguments) {
    double count = 0;
    for (const auto& value : validValues(index, definitions.parameters, arguments)) {
        const auto* const span = std::get_if<NumberSpan>(&value);
        count += span == nullptr ? 1 : std::max(0.0, 1.0 + span->high - span->low);
    }
    return count;
}

double widestSet(const IndexSpec& clause) {
    double widest = 0;
    for (const auto& selector : clause.selectors) {
        const auto& [kind, names, numbers, ranges] = selector.values;
        auto width = static_cast<double>(names.size() + numbers.size());
        for (const auto& [low, high] : ranges)
            width += 1.0 + high - low;
        widest = std::max(widest, width);
    }
    return widest;
}

double widestSet(const PresetDefinitions& presets) {
    double widest = 0;
    for (const auto& preset : presets.presets) {
        for (const auto* const lists : {&preset.includeLists, &preset.excludeLists}) {
            for (const auto& list : *lists) {
                for (const auto& clause : list.indexSpecs)
                    widest = std::max(widest, widestSet(clause));
                for (const auto& item : list.items) {
                    for (const auto& clause : item.indexSpecs)
                        widest = std::max(widest, widestSet(clause));
                }
            }
        }
    }
    return widest;
}

double keyCount(const Definitions& definitions, const SystemArguments& arguments) {
    const double widest = widestSet(definitions.presets);
    double sum = widest;
    for (const auto& [name, parameter] : definitions.parameters) {
        double product = 1;
        for (const auto& dimension : parameter.indices) {
            const auto* const index = definitions.parameters.find(dimension.indexName());
            product *= index == nullptr
                           ? 1
                           : std::max(widest, countValues(*index, definitions, arguments));
        }
        if (parameter.access == AccessType::ACCESS_INDEX)
            product = countValues(parameter, definitions, arguments);
        sum += product;
    }
    return sum;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::silence();
    constexpr std::size_t longest = 4096;
    const auto text = fuzz::textOf(data, size);
    if (size > longest)
        return 0;
    const auto parts = partsOf(text, 4);
    SystemArguments arguments;
    addSystemArgument(arguments, parts[0]);
    const test::MemoryFile parameters(parts[1]);
    const test::MemoryFile presets(parts[2]);
    const test::MemoryFile stored(parts[3]);
    auto definitions = readDefinitions(parameters.path(), presets.path());
    // Each item or clause may select all of them once more.
    const auto selections =
        std::count_if(text.begin(), text.end(), [](char c) { return c == '{' || c == ','; });
    if (!definitions ||
        !(keyCount(*definitions, arguments) * static_cast<double>(selections) <= maxKeys))
        return 0;
    const PresetManager manager(*definitions, arguments);
    definitions.reset(); // the tables borrow nothing from them
    const OwnedStream stream(std::fopen(stored.path().c_str(), "r"));
    readPresetFile(stream.get(), [&](PresetEntry& entry) {
        if (translateEntry(manager.translation(), entry))
            manager.in_preset(presetKey(entry), "p");
    });
    return 0;
}
