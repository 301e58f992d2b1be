// Records the calls that change files, and makes chosen ones fail, inside a test program.
#pragma once

#include <string>
#include <vector>

namespace morvane::test {

/// Watches rename, remove, fopen, fsync and fclose while it lives. One at a time.
///
/// A call reads "rename old new", "remove name", "fopen name", "fsync name" or "fclose name", with
/// the last component of each path; "." is the folder itself.
class FileRecorder {
public:
    FileRecorder();
    ~FileRecorder();
    FileRecorder(const FileRecorder&) = delete;
    FileRecorder& operator=(const FileRecorder&) = delete;

    /// Makes a call fail with `error` instead of doing anything; a failing "fclose" still closes.
    /// @param count how many times the call is let pass before.
    void fail(const std::string& call, int error, int count = 0);

    const std::vector<std::string>& calls() const { return calls_; }

    /// For the interposed functions: notes a call.
    /// @return the error with which it is to fail, or 0.
    int note(const std::string& call);

private:
    struct Failure {
        std::string call;
        int error;
        int count;
    };

    std::vector<std::string> calls_;
    std::vector<Failure> failures_;
};

} // namespace morvane::test
