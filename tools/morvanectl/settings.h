// What the options of morvanectl say, for all of its subcommands.
#pragma once

#include "paramdef/system_arguments.h"

#include <string>
#include <vector>

namespace morvane::ctl {

/// One system argument of `check --all-variants`, with every value that it takes.
struct VariantAxis {
    std::string name;
    std::vector<std::string> values;
};

struct Settings {
    std::string paramDefFile;
    std::string presetDefFile;
    SystemArguments systemArguments;
    std::string address; ///< of the bus; empty for the session bus
    bool json = false;

    std::string preset;
    std::string key;
    std::string file;
    std::string otherFile;         ///< of `diff`; empty when it reads the Parameter Handler
    std::vector<std::string> keys; ///< of `store-subpreset` and `in-preset`
    std::vector<VariantAxis> axes; ///< of `check`
    std::string livePreset;        ///< of `diff`
    bool dryRun = false;
};

} // namespace morvane::ctl
