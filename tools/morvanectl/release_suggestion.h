// The lines of a translate section that keep what a release would lose.
#pragma once

#include "release_comparison.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {

/// Collects what older releases have lost, and makes lines of it.
class TranslationSuggestion {
public:
    /// @param newer borrowed for the life of the object.
    explicit TranslationSuggestion(const Release& newer) : newer_(newer) {}

    /// Suggests lines for what is lost of an older release: a new name for a parameter that is not
    /// defined any more, if a new one is called almost like it, or else its place in a removed
    /// list; and an index mapping for each parameter of which the number of indices has changed.
    /// @param report of the comparison with the newer release.
    void add(const ReleaseReport& report, const Release& older);

    /// The lines, with a comment above those that are guesses; empty if there are none.
    std::string text() const;

private:
    /// An index mapping, by the new name of a parameter and the number of old indices.
    using Templates = std::map<std::pair<std::string, std::size_t>, std::string>;

    void addName(const std::string& name, const ReleaseReport& report, const Release& older,
                 std::vector<std::string_view>& candidates);
    bool isWhereLost(std::string_view newName, std::string_view lost, const ReleaseReport& report,
                     const Release& older) const;
    void addTemplate(const SystemParameter& before, std::string_view newName, std::size_t variant,
                     const Release& older);

    const Release& newer_;
    std::set<std::string> removed_;
    std::map<std::string, std::string> renamed_; ///< old name to new name
    Templates templates_;
};

} // namespace morvane::ctl
