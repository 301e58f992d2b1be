// What exists on this device: the values of its indices, and its parameters. Every condition is
// evaluated here, once, against the system arguments.
#pragma once

#include "paramdef/system_arguments.h"
#include "tables/text_list.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane {

class SystemParameterTable;

using IndexValues = std::vector<std::string>;

/// By index name. An index that does not exist on this device is not there.
using IndexTable = std::map<std::string, IndexValues, std::less<>>;

/// The names of a parameter's indices, one per dimension. Their values are in the index table;
/// everything else in the definitions is resolved when the map is built.
using IndexNames = std::vector<std::string>;

/// The parameters of this device that have certain access types, in order of their names. Those
/// with the same indices are a group, numbered from 0: the lists of a preset are applied to groups.
class ParameterMap {
public:
    using Group = std::uint32_t;

    ParameterMap() = default;

    /// @param parameters in the order of their names.
    ParameterMap(std::initializer_list<std::pair<std::string_view, IndexNames>> parameters);

    /// Adds a parameter whose name is greater than all that are there.
    void append(std::string_view name, const IndexNames& indexNames);

    std::size_t size() const { return names_.size(); }
    std::string_view name(std::size_t place) const { return names_[place].view(); }
    Group group(std::size_t place) const { return groupOf_[place]; }
    const IndexNames& indexNames(std::size_t place) const { return groups_[groupOf_[place]]; }

    /// The place of a parameter; nothing if there is none of this name.
    std::optional<std::size_t> find(std::string_view name) const;

    /// The indices of each group.
    const std::vector<IndexNames>& groups() const { return groups_; }

    /// The groups that have an index of this name, in order.
    std::span<const Group> groupsWith(std::string_view indexName) const;

    bool operator==(const ParameterMap&) const = default;

private:
    Group groupWith(const IndexNames& indexNames);

    TextList names_;
    std::vector<Group> groupOf_;
    std::vector<IndexNames> groups_;
    std::map<IndexNames, Group> numbers_; ///< of the groups
    std::map<std::string, std::vector<Group>, std::less<>> groupsWith_;
};

/// Which parameters go into a parameter map.
enum class AccessSelector : std::int32_t {
    readOnly = 0, ///< "ro" and "rostrict"
    writeOnly = 1,
    readWrite = 2,
};

/// Appends the decimal text of every number from `low` to `high`, both included; nothing if `high`
/// is below `low`.
void appendNumbers(std::int32_t low, std::int32_t high, IndexValues& values);

namespace PresetGenerate {

/// The values of every index whose `ctrlValid` conditions hold: those of its `rangeValid`
/// attributes whose condition holds, in file order.
IndexTable indexTable(const SystemParameterTable& parameters, const SystemArguments& arguments);

/// The parameters of the selected access types whose `ctrlValid` conditions hold.
ParameterMap parameterMap(const SystemParameterTable& parameters, const SystemArguments& arguments,
                          AccessSelector selector);

} // namespace PresetGenerate

} // namespace morvane
