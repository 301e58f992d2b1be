// Records the calls that change files, and makes chosen ones fail, inside a test program.
#pragma once

#include <string>
#include <vector>

namespace morvane::test {

/// Watches rename, remove, open of a file that may be created, fsync and fclose while it lives, and
/// makes these and stat and fchown fail. One at a time.
///
/// A call reads "rename old new" or as "remove name", with the last component of each path; "." is
/// the folder itself.
class FileRecorder {
public:
    FileRecorder();
    ~FileRecorder();
    FileRecorder(const FileRecorder&) = delete;
    FileRecorder& operator=(const FileRecorder&) = delete;

    /// Makes a call fail with `error` instead of doing anything; a failing "fclose" still closes.
    /// @param count how many times the call is let pass before.
    void fail(const std::string& call, int error, int count = 0);

    /// What was called, without stat and fchown.
    const std::vector<std::string>& calls() const { return calls_; }

    /// For the interposed functions: notes a call; and says with which error it is to fail, or 0.
    void note(const std::string& call) { calls_.push_back(call); }
    int errorOf(const std::string& call);

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
