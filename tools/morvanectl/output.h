// What morvanectl writes, and how it ends.
#pragma once

#include "severity.h"

#include <nlohmann/json.hpp>
#include <span>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// Part of the tool's interface: scripts depend on it.
enum class ExitStatus : int {
    yes = 0,   ///< yes, same, done, nothing to complain about
    no = 1,    ///< no, different, warnings
    error = 2, ///< the question could not be answered
};

/// Writes for std::cout while it lives, and remembers why that failed first: errno would be that of
/// whatever ran between the failure and the report.
class StandardOutput : public std::streambuf {
public:
    StandardOutput();
    ~StandardOutput() override;
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    /// The number of the first error; 0 if all was written.
    int error() const { return error_; }

    /// Forgets the error, and writes nothing any more.
    void discard();

protected:
    int_type overflow(int_type byte) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    int sync() override;

private:
    void note(bool isWritten);

    std::streambuf* target_;
    int error_ = 0;
    bool isDiscarded_ = false;
};

/// What is said on standard error, beside the answer: lines after the program's name or, as JSON,
/// objects like those of findings, one a line.
class Messages {
public:
    explicit Messages(bool asJson = false) : asJson_(asJson) {}

    /// For what is tried beside a command: problems are appended to a list, and nothing is written.
    /// @param problems borrowed for the life of the object and its copies.
    static Messages keptIn(std::vector<std::string>& problems);

    /// Says why the question cannot be answered.
    /// @return ExitStatus::error, so that a command can end with it.
    ExitStatus fail(std::string_view problem) const;

    /// Says what may be a mistake.
    void warn(std::string_view problem) const;

    /// Says what is no problem, such as what is awaited.
    void note(std::string_view text) const;

    bool asJson() const { return asJson_; }

    /// Appends a problem to the list instead of writing it.
    /// @return false if there is no list.
    bool keep(std::string_view problem) const;

private:
    void say(Severity severity, std::string_view text) const;

    bool asJson_;
    std::vector<std::string>* problems_ = nullptr;
};

using Json = nlohmann::ordered_json;

/// The texts one after the other, with the separator between them.
std::string joined(std::span<const std::string> texts, const char* separator);

/// The first eight texts with commas between them, and how many more there are.
std::string shortList(std::span<const std::string> texts);

/// Writes one text per line, or one JSON array of texts.
void writeList(std::span<const std::string> texts, bool asJson);

/// Writes a value to standard error, on one line. Bytes that are not UTF-8 become U+FFFD.
void writeJsonLine(const Json& value);

/// Writes a value with a line feed. Bytes that are not UTF-8 become U+FFFD.
void writeJson(const Json& value);

} // namespace morvane::ctl
