// What is wrong or doubtful in a file, with its place: how it is written for people and programs.
#pragma once

#include "output.h"
#include "severity.h"
#include "text/source_text.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

struct Finding {
    std::string file;
    std::uint32_t line = 1;   ///< as an editor counts
    std::uint32_t column = 1; ///< in bytes, counted from 1
    Severity severity = Severity::warning;
    std::string code; ///< one word, for scripts
    std::string text;
    std::string sourceLine{};            ///< as it was read, or the piece of it that is meant
    std::uint32_t caret = 0;             ///< byte offset in the source line
    std::vector<std::string> notes{};    ///< what else is to be said about it
    std::vector<std::string> variants{}; ///< on which it was found; none if it is about one alone
};

/// Writes `FILE:LINE:COLUMN: SEVERITY: TEXT`.
///
/// @param where follows the text, such as " [on 2 of 3: field-*]".
void writeHead(std::ostream& stream, const Finding& finding, const std::string& where);

/// As above, with the line, a caret below it, and the notes.
void write(std::ostream& stream, const Finding& finding, const std::string& where = {});

/// Writes the finding to standard error, with its line, caret and notes or as JSON.
void report(const Finding& finding, const Messages& messages);

/// Appends the finding to a JSON array of objects, and each note as one of its own.
void appendJson(Json& list, const Finding& finding);

/// A definition file, in which findings have their places.
class SourceFile {
public:
    /// @param text borrowed for the object's life.
    SourceFile(std::string path, const SourceText& text);

    Finding at(SourceText::Place place, Severity severity, std::string code,
               std::string text) const;

private:
    std::string path_;
    const SourceText& text_;
    // By the number of a line as it was read: the place in the file of its first byte.
    std::vector<SourceText::Place> begins_;
};

} // namespace morvane::ctl
