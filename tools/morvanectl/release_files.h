// What a release makes of preset data files that there are.
#pragma once

#include "findings.h"
#include "release_comparison.h"

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace morvane::ctl {

/// What a load finds in a file on the variant on which it finds least, of several the first.
struct FileOutcome {
    std::string file;
    std::size_t variant = 0; ///< number, from 0
    std::vector<Finding> warnings;
};

/// Reads every preset data file in a folder and in those below it as a load of any preset does, on
/// each variant of a release: which of them a file is from, it does not say.
///
/// @param release its definitions are moved while the files are read, and put back.
/// @return in the order of the names of the files; nothing, with a message on standard error, if
///         one cannot be read, or if there is none.
std::optional<std::vector<FileOutcome>> checkFiles(Release& release, const std::string& folder,
                                                   const Messages& messages);

/// How many files are loaded without a warning.
std::size_t countOfGood(const std::vector<FileOutcome>& files);

/// Writes how many files are loaded without a warning, and the warnings of the others.
void writeFiles(std::ostream& stream, const std::vector<FileOutcome>& files,
                const std::string& folder, const Release& release);

/// The same as an object.
Json jsonOf(const std::vector<FileOutcome>& files, const std::string& folder,
            const Release& release);

/// Whether there is a warning about one of the files.
bool hasLoss(const std::vector<FileOutcome>& files);

} // namespace morvane::ctl
