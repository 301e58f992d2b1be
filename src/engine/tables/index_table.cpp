#include "engine/tables/index_table.h"

#include "text/number.h"

namespace morvane {

// Counts in 64 bits: a span may end at the greatest number.
void appendNumbers(std::int32_t low, std::int32_t high, IndexValues& values) {
    for (std::int64_t number = low; number <= high; ++number)
        values.push_back(decimalText(static_cast<std::int32_t>(number)));
}

} // namespace morvane
