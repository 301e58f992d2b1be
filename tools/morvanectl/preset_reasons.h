// Why a preset covers some keys of a parameter and others not: which parts of its lists decide.
#pragma once

#include "preset_parts.h"

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {

/// The keys of a parameter that the variant has.
KeySet instancesOf(std::string_view parameter, const PresetManager& manager);

/// Whether the preset covers a key on the variant. One that does not is not used.
bool coversKeys(const PresetDefinition& preset, const PresetManager& manager);

/// The keys of a parameter that a part of a list selects.
struct PartSelection {
    std::size_t part = 0; ///< its number in `PresetReasons::parts`
    KeySet keys;
};

/// Keys of a parameter about which the same parts decide.
struct DecidedKeys {
    bool areCovered = false;
    /// Those that add the keys of a read-only parameter, or take those of a read-write one away.
    std::vector<std::size_t> parts;
    std::vector<std::string> endings; ///< what follows the parameter's name, such as "[1][2]"

    bool operator==(const DecidedKeys&) const = default;
};

/// The parts of one preset's lists, and what they select on one variant.
class PresetReasons {
public:
    /// Both are borrowed for the object's life.
    PresetReasons(const PresetDefinition& preset, const PresetManager& manager);

    const std::vector<PresetPart>& parts() const { return parts_; }

    /// Whether an item of a list names the parameter. Those with the same indices that no item
    /// names have the same reasons.
    bool hasItem(std::string_view parameter) const { return ofItems_.contains(parameter); }

    /// What a part does with the keys that it selects.
    std::string textOf(std::size_t part) const;

    /// Why a parameter's keys about which no part decides are covered, or not.
    const char* textOfNone(bool isReadOnly) const;

    /// What decides about a parameter that the variant has, in the order of the parts. Parts that
    /// select nothing of it are left out.
    std::vector<PartSelection> selectionsOf(std::string_view parameter) const;

    /// All keys that the parameter has on the variant, and those that the preset covers beside
    /// them. Takes little time for a parameter whose indices are those of one asked for before,
    /// unless an item names it.
    /// @return nothing for a parameter that the variant does not have; valid as long as the object.
    const std::vector<DecidedKeys>& of(std::string_view parameter);

private:
    std::vector<std::size_t> partsAbout(std::string_view parameter) const;
    std::vector<DecidedKeys> decidedKeys(std::string_view parameter) const;

    const PresetManager& manager_;
    std::vector<PresetPart> parts_;
    std::vector<std::size_t> ofAll_; ///< numbers of the parts that name no parameter
    std::map<std::string, std::vector<std::size_t>, std::less<>> ofItems_; ///< of the others
    std::size_t includedAll_; ///< the first part that is an "all" of an include list, or none
    KeySet keys_;             ///< of the preset
    std::map<std::pair<const ParameterMap*, ParameterMap::Group>, std::vector<DecidedKeys>>
        ofGroup_; ///< of the parameters that no item names
    std::map<std::string, std::vector<DecidedKeys>, std::less<>> ofItem_;
};

} // namespace morvane::ctl
