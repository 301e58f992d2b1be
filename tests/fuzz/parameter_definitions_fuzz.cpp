// Reads any bytes as a parameter definition file.

#include "fuzz_input.h"
#include "paramdef/param_def_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane;
    fuzz::silence();
    const test::MemoryFile file(fuzz::textOf(data, size));
    SystemParameterTable table;
    static_cast<void>(readParamDefFile(file.path().c_str(), &table));
    return 0;
}
