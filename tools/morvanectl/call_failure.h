// Why a call of the preset service failed, as far as that can be told from outside. The service
// says no more than that it failed; the rest is in its log.
#pragma once

#include "bus_client.h"
#include "settings.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// A call of the preset service.
struct PresetCall {
    std::string_view method;
    std::string preset;
    std::string file; ///< as it is sent; empty without one
    std::vector<std::string> keys;
};

/// What is said of the file of a call: facts if the service runs as this user, who sees what it
/// sees, and deductions otherwise.
///
/// @param problems    as this user sees them.
/// @param serviceUser nothing if it is not known.
std::vector<std::string> notesOfFile(const std::string& file,
                                     const std::vector<std::string>& problems, unsigned ownUser,
                                     std::optional<unsigned> serviceUser);

/// Writes notes to standard error: facts, as they are seen from here, what follows from them
/// probably, and where the log is. Asks both services, for a few seconds at most, and reads the
/// definition files at hand.
///
/// @param outcome of the call: `answered` if it was answered with no.
void explainFailure(const BusClient& bus, const Settings& settings, const PresetCall& call,
                    Answer::Outcome outcome);

} // namespace morvane::ctl
