#include "suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

// The number of bytes to be inserted, removed or replaced, or of neighbours to be exchanged. Goes
// through the table of the distances between the beginnings of both, keeping three of its rows.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::vector<std::size_t> row{i + 1};
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t differs = a[i] == b[j] ? 0 : 1;
            row.push_back(std::min({last[j] + differs, row[j] + 1, last[j + 1] + 1}));
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j])
                row.back() = std::min(row.back(), beforeLast[j - 1] + 1);
        }
        beforeLast = std::exchange(last, std::move(row));
    }
    return last.back();
}

} // namespace

std::string nearest(std::string_view name, std::span<const std::string_view> candidates) {
    constexpr std::size_t longestName = 200; // beyond, it is no typing mistake that was made
    constexpr std::size_t share = 3;
    std::string_view best;
    auto least = std::max<std::size_t>(name.size() / share, 1) + 1;
    for (const auto candidate : candidates) {
        const auto longer = std::max(name.size(), candidate.size());
        const auto shorter = std::min(name.size(), candidate.size());
        if (longer > longestName || longer - shorter >= least || candidate == name)
            continue;
        const auto changes = distance(name, candidate);
        if (changes < least && changes < name.size()) {
            least = changes;
            best = candidate;
        }
    }
    return std::string(best);
}

std::string suggestion(std::string_view name, std::span<const std::string_view> candidates) {
    const auto best = nearest(name, candidates);
    return best.empty() ? best : "did you mean " + best + "?";
}

} // namespace morvane::ctl
