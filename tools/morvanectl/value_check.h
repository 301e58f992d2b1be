// What the definitions say of a value for a parameter, as far as they decide it.
#pragma once

#include "paramdef/system_arguments.h"
#include "paramdef/system_parameter.h"
#include "tables/valid_values.h"

#include <map>
#include <string>
#include <string_view>

namespace morvane::ctl {

struct ValueVerdict {
    enum class Kind {
        accepted,
        refused, ///< none of the ranges has it, whatever the parameters are set to
        unknown, ///< that depends on the values of parameters
    };

    Kind kind = Kind::accepted;
    std::string why; ///< empty if it is accepted
};

/// An item or all items of ranges, as they may stand there.
std::string textOf(const ValidValue& item);
std::string textOf(const std::vector<ValidValue>& items);

/// Whether the range has a bound that names a parameter, so that it cannot be computed.
bool hasOpenItem(const RangeSpec& range, const SystemParameterTable& parameters,
                 const SystemArguments& arguments);

class ValueCheck {
public:
    /// Both are borrowed for the life of the check.
    ValueCheck(const SystemParameterTable& parameters, const SystemArguments& arguments)
        : parameters_(parameters),
          arguments_(arguments) {}

    /// @param name  of a parameter that the table has.
    /// @param value as written in preset data files.
    ValueVerdict check(std::string_view name, std::string_view value);

private:
    const AcceptedValues& acceptedBy(const SystemParameter& parameter);
    std::string whyUnknown(const SystemParameter& parameter, std::string_view value) const;

    const SystemParameterTable& parameters_;
    const SystemArguments& arguments_;
    std::map<std::string_view, AcceptedValues> accepted_; ///< of the parameters asked for
};

} // namespace morvane::ctl
