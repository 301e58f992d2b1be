// What a release does to stored presets, as a page for a browser.
#pragma once

#include "block_lines.h"
#include "output.h"
#include "release_comparison.h"
#include "release_files.h"
#include "settings.h"

#include <map>
#include <string>
#include <vector>

namespace morvane::ctl {

/// How a release defines some parameters, each with its indices.
class DefinedParameters {
public:
    /// @param release borrowed for the life of the object.
    explicit DefinedParameters(const Release& release)
        : release_(release),
          lines_(blockLines(release.definitions.parameters.text())) {}

    /// @param name of a parameter, which the release need not define.
    void add(const std::string& name);

    Json take();

private:
    const Release& release_;
    BlockLines lines_;
    // A JSON object would search all of its names for each one.
    std::map<std::string, Json> blocks_;
    std::map<std::string, Json> indices_;
};

/// Gathers what the page carries:
///
///     newest      the name of the release that is installed
///     parameters  how it defines what rows name: {file, blocks, indices}
///                 blocks: {name: [{line, text}]}, the lines that define a parameter or index
///                 indices: {name: [name, ...]}, the indices of a parameter
///     groups      titles of what fates have in common
///     fates       [{code, text, group}], where group is a number of a title
///     releases    [{name, lost, variants, presets, gone, sets, places, rows,
///                 parameters}], the older ones
///                 lost: whether something is lost that the newest does not say
///                 variants: [{name, arguments}]
///                 presets: names
///                 gone: a line for each variant and preset that the newest does not have
///                 sets: [[preset, ...], ...], of presets, by their numbers
///                 places: [{text, on: [[variant, set], ...]}], with numbers of both
///                 rows: [{fate, parameter, newName, values, keys: [[before, after], ...], place}]
///                 where fate and place are numbers; text, newName, before and after may be empty
///     suggestion  the lines that would be missing; may be empty
///     files       what is said of preset data files, {count, good, text}; null if none are read
class ReleasePage {
public:
    /// @param newest borrowed for the life of the object.
    explicit ReleasePage(const Release& newest) : newest_(newest), parameters_(newest) {}

    void add(const ReleaseReport& report, const Release& older);
    void add(const std::vector<FileOutcome>& files, const std::string& folder);

    /// @param suggestion of lines for all that were added.
    /// @return yes, or error with a message on standard error.
    ExitStatus write(const Settings& settings, const std::string& suggestion);

private:
    const Release& newest_;
    DefinedParameters parameters_;
    Json releases_ = Json::array();
    Json files_;
};

} // namespace morvane::ctl
