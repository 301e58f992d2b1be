// What a release does to stored presets, as a page for a browser.
#pragma once

#include "block_lines.h"
#include "output.h"
#include "release_comparison.h"
#include "settings.h"

#include <string>

namespace morvane::ctl {

/// Gathers what the page carries:
///
///     newest      the name of the release that is installed
///     parameters  where it defines its parameters: {file, blocks}
///                 blocks: {name: [{line, text}]}, the lines that define what rows name
///     groups      titles of what fates have in common
///     fates       [{code, text, group}], where group is a number of a title
///     releases    [{name, variants, presets, gone, sets, places, rows, parameters}], the older
///     ones
///                 variants: [{name, arguments}]
///                 presets: names
///                 gone: a line for each variant and preset that the newest does not have
///                 sets: [[preset, ...], ...], of presets, by their numbers
///                 places: [{text, on: [[variant, set], ...]}], with numbers of both
///                 rows: [{fate, parameter, newName, values, keys: [[before, after], ...], place}]
///                 where fate and place are numbers; text, newName, before and after may be empty
///     suggestion  the lines that would be missing; may be empty
///     files       what is said of the preset data files; empty if none are checked
class ReleasePage {
public:
    /// @param newest borrowed for the life of the object.
    explicit ReleasePage(const Release& newest);

    void add(const ReleaseReport& report, const Release& older);

    /// @param suggestion of lines for all that were added.
    /// @param files      what is said of the preset data files.
    /// @return yes, or error with a message on standard error.
    ExitStatus write(const Settings& settings, const std::string& suggestion,
                     const std::string& files);

private:
    const Release& newest_;
    Json releases_ = Json::array();
    Json blocks_ = Json::object(); ///< of the newest release
    BlockLines lines_;             ///< of the newest release
};

} // namespace morvane::ctl
