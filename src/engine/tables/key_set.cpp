#include "engine/tables/key_set.h"

#include <algorithm>
#include <utility>

namespace morvane {

KeySet::KeySet(std::vector<std::string> keys) : keys_(std::move(keys)) {
    if (!std::is_sorted(keys_.begin(), keys_.end()))
        std::sort(keys_.begin(), keys_.end());
    keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
    keys_.shrink_to_fit();
}

bool KeySet::contains(std::string_view key) const {
    return std::binary_search(keys_.begin(), keys_.end(), key, std::less<>{});
}

} // namespace morvane
