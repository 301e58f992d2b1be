// Which instances of a parameter a preset covers, before their keys are made.
#pragma once

#include "tables/key_order.h"
#include "tables/selections.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace morvane {

/// Some instances of a parameter: the values of each dimension, by their places in the index.
using Places = std::vector<std::vector<std::uint32_t>>;

/// Some instances of a parameter: the texts of the values of each dimension.
using WrittenValues = std::vector<IndexValues>;

/// Which instances of one parameter, or of those of a group, a preset covers: none of them unless
/// one of the members says so.
struct Coverage {
    bool all = false;
    Places part = {}; ///< empty if there is none
    /// What an include list may name: values that the index does not have, and several parts.
    std::vector<WrittenValues> written = {};

    bool none() const { return !all && part.empty() && written.empty(); }
};

/// What the lists of a preset cover of the parameters of one map.
class ListCoverage {
public:
    enum class Lists {
        include, ///< cover what they name, or everything from a list of "all" on
        exclude  ///< cover what they do not name, or nothing from a list of "all" on
    };

    /// The tables are borrowed for the object's life, the lists only while it is made.
    ListCoverage(Lists kind, const std::vector<PresetList>& lists, const IndexTable& indices,
                 const ParameterMap& parameters);

    /// @param dimensions of the parameter at this place, every index of which exists.
    /// @return valid until the next call.
    const Coverage& of(std::size_t place, const Dimensions& dimensions);

private:
    Coverage covered(std::size_t place, std::span<const Selection> ofGroup,
                     std::span<const Selection> ofItem, const Dimensions& dimensions) const;

    Lists kind_;
    const IndexTable& indices_;
    const ParameterMap& parameters_;
    Selections selections_;
    bool all_ = false;
    Coverage unnamed_;                              ///< of the parameters that no list names
    std::map<ParameterMap::Group, Coverage> group_; ///< of those that no item names
    Coverage item_;                                 ///< of the last parameter that an item names
};

} // namespace morvane
