// The catalogue of system parameters as the parameter definition file declares them. Names, values
// and conditions stay as they were written, and borrow their texts from the text of the file;
// nothing is evaluated here.
#pragma once

#include "paramdef/expression.h"
#include "text/source_text.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace morvane {

/// How a parameter may be used. The codes are part of the model.
enum class AccessType : std::int32_t {
    ACCESS_INDEX = 0,    ///< not a settable value: the values that an index may take
    ACCESS_RO = 1,       ///< read-only
    ACCESS_ROSTRICT = 2, ///< read-only, strictly
    ACCESS_WO = 3,       ///< write-only
    ACCESS_RW = 4,       ///< read-write
};

/// The access type of a keyword such as "rw"; nothing for any other word.
std::optional<AccessType> accessTypeOf(std::string_view keyword);

struct IndexName {
    std::string_view name;
    std::uint32_t line = 0;
    std::uint32_t column = 0;

    bool operator==(const IndexName&) const = default;
};

/// One `index` attribute: one dimension of a parameter.
struct IndexDimension {
    std::vector<IndexName> names; ///< at least one

    /// The index that gives the dimension its values. Further names are kept but not used.
    std::string_view indexName() const { return names.front().name; }
};

/// A single value, or the span from `low` to `high`. Each bound is one number, one string, or the
/// tokens of a parenthesised expression.
struct RangeItem {
    TokenList low;
    TokenList high; ///< empty for a single value

    bool operator==(const RangeItem&) const = default;
};

struct RangeSpec {
    Expression condition; ///< empty without one
    std::vector<RangeItem> items;
};

struct DefaultSpec {
    Expression condition; ///< empty without one
    Expression value;     ///< one number, one string, or a parenthesised expression
};

/// The two sides of a `valueChange` attribute.
struct ValueChange {
    std::uint32_t fromLine = 0;
    std::uint32_t fromColumn = 0;
    std::string_view from;
    std::uint32_t toLine = 0;
    std::uint32_t toColumn = 0;
    std::string_view to;

    bool operator==(const ValueChange&) const = default;
};

/// One parameter, its attribute lists in file order.
struct SystemParameter {
    std::string_view name;
    std::uint32_t line = 0; ///< where the name was first read
    AccessType access = AccessType::ACCESS_INDEX;
    std::vector<IndexDimension> indices;
    std::vector<RangeSpec> rangeValid;
    std::vector<RangeSpec> rangeDoc;
    std::vector<Expression> ctrlRO;
    std::vector<Expression> ctrlValid;
    std::vector<DefaultSpec> defaults;
    std::vector<ValueChange> valueChange;

    /// Says whether one of the parameter's dimensions takes its values from `indexName`.
    bool hasIndex(std::string_view indexName) const;
};

/// The parameters by name, in bytewise order.
class SystemParameterTable {
public:
    using Map = std::map<std::string_view, SystemParameter>;

    /// @return the parameter, or null; valid as long as the table.
    const SystemParameter* find(std::string_view name) const;
    SystemParameter* find(std::string_view name);

    /// Adds a parameter without attributes. A name that is there already keeps its record and its
    /// line, so that the attributes of a parameter may be spread over several blocks.
    ///
    /// @param name borrowed, as all texts of the record will be: from `text()`, or from what lives
    ///             longer than the table.
    void insert(std::string_view name, std::uint32_t line);

    /// Removes all parameters, but not the text.
    void clear();

    /// @return the record of the last name inserted, or null before the first.
    SystemParameter* lastInserted() { return content_->lastInserted; }

    Map::const_iterator begin() const { return content_->parameters.begin(); }
    Map::const_iterator end() const { return content_->parameters.end(); }
    std::size_t size() const { return content_->parameters.size(); }

    /// What the parameters borrow their texts from.
    SourceText& text() { return content_->text; }
    const SourceText& text() const { return content_->text; }

private:
    /// Stays where it is when the table is moved, and what points into it with it.
    struct Content {
        SourceText text;
        Map parameters;
        SystemParameter* lastInserted = nullptr;
    };
    std::unique_ptr<Content> content_ = std::make_unique<Content>();
};

} // namespace morvane
