// What the options of morvanectl say, for all of its subcommands.
#pragma once

#include "output.h"
#include "paramdef/system_arguments.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {

constexpr const char* installedParamDefFile = "/etc/morvane/parameters.def";
constexpr const char* installedPresetDefFile = "/etc/morvane/presets.def";

/// How long something may take; nothing for no limit.
using TimeLimit = std::optional<std::chrono::milliseconds>;

/// One system argument of `--all-variants`, with every value that it takes.
struct VariantAxis {
    std::string name;
    std::vector<std::string> values;
};

struct Settings {
    std::string paramDefFile;
    std::string presetDefFile;
    SystemArguments systemArguments; ///< that the options give
    std::string variant;             ///< the name of one; empty without
    std::string variantsFile;        ///< the list of named variants; empty for the usual place
    std::string address;             ///< of the bus; empty for the session bus
    TimeLimit timeLimit;             ///< of the connection to the bus and of each call
    bool json = false;
    Messages messages;                        ///< as JSON with `json`
    StandardOutput* standardOutput = nullptr; ///< borrowed

    std::string preset; ///< empty where a command needs none
    std::string key;
    std::string file;
    std::string otherFile;                ///< of `diff`; empty when it reads the Parameter Handler
    std::vector<std::string> keys;        ///< of `store-subpreset`, `in-preset` and `get`
    std::vector<std::string> assignments; ///< of `set`: keys, each with its value behind it
    bool ofStatus = false;                ///< of `set`: what read-only parameters show
    bool allVariants = false;             ///< the named ones, or every combination of the axes
    std::vector<VariantAxis> axes;
    bool asDaemon = false;        ///< of `check`: the daemon's own report, and nothing else
    bool strict = false;          ///< of `check`: warnings decide the status
    bool verbose = false;         ///< of `check`: also what is absent on some of the variants only
    bool withDefaults = false;    ///< of `diff`: compare with a load that resets what FILE lacks
    bool onlyDifferences = false; ///< of `matrix`: parameters covered differently on some variant
    bool csv = false;
    bool suggest = false; ///< of `release`: show the lines that are missing, not the report
    std::optional<std::string> html;   ///< of `matrix` and `release`: the page to write
    std::string pattern;               ///< of `matrix`: of the names of parameters; empty for all
    std::vector<std::string> releases; ///< of `release`: folders, the newest one last
    std::string output;                ///< of `translate`: the file to write; empty for none
    bool dryRun = false;
};

} // namespace morvane::ctl
