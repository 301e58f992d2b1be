// The subcommands. Each writes its answer to standard output and its problems to standard error.
#pragma once

#include "output.h"
#include "settings.h"

namespace morvane::ctl {

// With the running services.
ExitStatus callService(const Settings& settings, const char* method);
ExitStatus showStatus(const Settings& settings);
ExitStatus diffLive(const Settings& settings);
ExitStatus getValues(const Settings& settings);
ExitStatus setValues(const Settings& settings);
ExitStatus monitorBus(const Settings& settings);
ExitStatus checkHandler(const Settings& settings);

// With the definition files alone.
ExitStatus checkDefinitions(const Settings& settings);
ExitStatus listPresets(const Settings& settings);
ExitStatus listKeys(const Settings& settings);
ExitStatus explainKey(const Settings& settings);
ExitStatus showMatrix(const Settings& settings);
ExitStatus translateFile(const Settings& settings);
ExitStatus validateFile(const Settings& settings);
ExitStatus diffFiles(const Settings& settings);
ExitStatus showRelease(const Settings& settings);

/// Shows the calls of a load, one per line.
/// @param method "load", "load_with_default" or "load_default".
ExitStatus showLoad(const Settings& settings, const char* method);

} // namespace morvane::ctl
