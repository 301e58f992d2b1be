// What can be found out about the two services beside their answers: who runs them, whether the
// preset service has the presets of the definition files at hand, whether the Parameter Handler
// reads.
#pragma once

#include "bus_client.h"
#include "settings.h"
#include "variant.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {

/// The process that connected to the bus. A daemon that detaches after that is another one, which
/// the bus does not know.
struct Process {
    unsigned id = 0;
    std::string program; ///< empty if there is no such process any more, or it cannot be seen
};

/// @return nothing if the bus does not know it.
std::optional<Process> processOf(const BusClient& bus, const Service& service,
                                 const TimeLimit& limit);

/// The number of the user who runs it.
/// @return nothing if the bus does not know it.
std::optional<unsigned> userOf(const BusClient& bus, const Service& service,
                               const TimeLimit& limit);

/// The definition files, if they describe one variant.
struct FilesAtHand {
    std::optional<Variant> variant;
    std::string whyNot; ///< empty with a variant
};

/// As `readVariant`, but says nothing.
FilesAtHand readFilesAtHand(const Settings& settings);

/// How the presets of the service differ from those of the definition files.
struct PresetComparison {
    std::size_t known = 0;              ///< how many presets both have
    std::vector<std::string> missing{}; ///< those that the service lacks
    std::vector<std::string> surplus{}; ///< those that the service has, and this variant lacks
    std::string whyNot{};               ///< why the service could not be asked; empty if it was

    /// Whether the service lacks all that there are.
    bool hasNone() const { return whyNot.empty() && known == 0 && !missing.empty(); }
};

/// Asks for every preset that the definition file names.
/// @param limit of each question, and of all together.
PresetComparison comparePresets(const BusClient& bus, const Variant& variant,
                                const TimeLimit& limit);

/// Has the Parameter Handler read keys. Without any, it is asked for the key "", which it can do
/// nothing but refuse.
Answer readKeys(const BusClient& bus, const std::vector<std::string>& keys, const TimeLimit& limit);

} // namespace morvane::ctl
