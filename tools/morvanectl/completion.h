// What a shell may offer for the last word of a command line that is being typed. The shells' own
// scripts hand the words over and know nothing of subcommands and options.
#pragma once

#include "help.h"
#include "output.h"
#include "settings.h"

#include <string>
#include <vector>

namespace morvane::ctl {

/// The word that is being typed, and what it stands for.
struct TypedWord {
    std::string meaning;                ///< as help texts call a value: FILE, PRESET, KEY, VARIANT
    std::string fixed;                  ///< what precedes the value in the word: "--for=", or empty
    std::string begun;                  ///< as much of the value as is typed
    std::vector<std::string> choices{}; ///< subcommands or options, if it is one
};

/// Reads a command line that ends where the cursor is, and may be wrong. What its options and
/// arguments say goes where a parse puts it.
///
/// @param app   not used for a parse before.
/// @param help  knows which options a subcommand takes.
/// @param words behind the name of the program; the last is the one that is being typed.
TypedWord readTypedLine(CLI::App& app, const Help& help, std::vector<std::string> words);

/// Writes the words that the typed one may become, one a line, and nothing to standard error.
///
/// @param settings what the words before it say.
/// @return ExitStatus::no if the word names a file, which the shell is to complete; `error` if the
///         definition files or the list of variants cannot be read.
ExitStatus showChoices(const TypedWord& word, Settings settings);

} // namespace morvane::ctl
