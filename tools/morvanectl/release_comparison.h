// What a release of the definition files makes of the presets that an older one has stored: of each
// key, and of the values that it may have.
#pragma once

#include "core/definitions.h"
#include "described_variants.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace morvane::ctl {

/// The definition files of one release, for all variants that are asked for.
struct Release {
    std::string name;
    std::string parameterFile; ///< from which the definitions of parameters are
    Definitions definitions;
    std::vector<DescribedVariant> variants; ///< one without a name, or several
};

/// What becomes of keys, in the order in which they are shown.
enum class Fate : std::uint8_t {
    // Lost, and no definition says so.
    unlisted,   ///< the newer release does not define the parameter, nor lists it as removed
    absent,     ///< the parameter is not on the variant any more, or no preset can have it
    unmapped,   ///< the number of indices is another one, and there is no index mapping for it
    badMapping, ///< its index mapping refers to an old index that it does not have
    noInstance, ///< the parameter does not have the index value on the variant any more
    unknownKey, ///< a preset includes it although the variant does not have it: the load fails
    badValue,   ///< some of its values are in no range any more: a load that sets one fails
    // Not loaded, as the definitions say.
    removed,
    notInPreset,
    readOnly, ///< read-only now, and the preset does not include it
    // Taken over.
    setTwice,       ///< another key of the preset becomes the same one; the later line counts
    undecidedValue, ///< whether ranges have some of its values depends on parameters
    asStatus,       ///< read-only now, but in the preset: what it shows is set
    valueMapped,
    renamed,
    reindexed,
    renamedAndReindexed,
    kept,
    // In no file that the older release has stored.
    added,               ///< a load with defaults resets it to its default
    addedWithoutDefault, ///< the definitions do not say to what a load with defaults resets it
};

/// Presets of one variant.
struct PresetsOnVariant {
    std::size_t variant; ///< number, from 0, of the older release
    std::vector<std::string> presets;

    auto operator<=>(const PresetsOnVariant&) const = default;
};

/// Keys of one parameter with one fate, in the same presets.
struct ReleaseRow {
    struct Key {
        std::string before; ///< empty if no file has it
        std::string after;  ///< empty if it is not loaded

        auto operator<=>(const Key&) const = default;
    };

    Fate fate;
    std::string parameter;           ///< of the older release; of the newer one if no file has it
    std::string newName;             ///< of the parameter that its entries become
    std::vector<std::string> values; ///< that the fate is about; none if it is not about values
    std::vector<Key> keys;
    std::vector<PresetsOnVariant> places;
};

struct ReleaseReport {
    std::vector<std::string> goneVariants;
    std::vector<PresetsOnVariant> gonePresets; ///< of the other variants
    std::vector<PresetsOnVariant> compared;    ///< those that are left, with all their variants
    std::vector<ReleaseRow> rows;              ///< by fate and parameter; a key may be in several

    /// Whether something is lost that no definition of the newer release says.
    bool hasLoss() const;
};

/// The arguments of the same variant in a newer release.
/// @return null if it does not have the variant; borrowed from either.
const SystemArguments* argumentsIn(const Release& newer, const DescribedVariant& variant);

/// Takes every key that a store of the older release could have written, for each of its variants
/// and presets, through a load by the newer one. The variants of both belong together by name; a
/// single one without a name has the same arguments in both.
ReleaseReport compareReleases(const Release& older, const Release& newer);

/// Whether keys of this fate are lost without the newer release saying so.
bool isLoss(Fate fate);

} // namespace morvane::ctl
