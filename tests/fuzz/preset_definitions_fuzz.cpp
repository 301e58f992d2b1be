// Reads any bytes as a preset definition file, and checks it against parameters.

#include "fuzz_input.h"
#include "paramdef/param_def_parser.h"
#include "presetdef/preset_def_file.h"
#include "presetdef/validation.h"

namespace {

morvane::SystemParameterTable makeParameters() {
    using namespace morvane;
    SystemParameterTable table;
    ParamDefParser parser;
    std::uint32_t column = 0;
    std::uint32_t number = 0;
    for (const std::string_view line :
         {"a index { rangeValid { 0..3 } }", "b index { rangeValid { \"x\" } }",
          "p rw { index { a } index { b } }", "q rw { }", "r ro { index { a } }"}) {
        if (parser.parseParamDefLine(table, column, line, ++number) != ParamDefResult::ok)
            __builtin_trap();
    }
    return table;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane;
    fuzz::silence();
    static const auto parameters = makeParameters();
    const test::MemoryFile file(fuzz::textOf(data, size));
    PresetDefinitions definitions;
    if (readPresetDefFile(file.path().c_str(), &definitions) == PresetParseResult::PARSE_PRESET_OK)
        static_cast<void>(validatePresetDefinitions(definitions, parameters));
    return 0;
}
