// Records the calls that change files, and makes chosen ones fail, inside a test program.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace morvane::test {

/// Records rename, remove, open of a file that may be created, fsync and fclose while it lives, and
/// can make these and stat and fchown fail. Only one may live at a time.
///
/// A call reads like "rename old new" or "remove name", with the last component of each path; "."
/// is the folder itself.
class FileRecorder {
public:
    FileRecorder();
    ~FileRecorder();
    FileRecorder(const FileRecorder&) = delete;
    FileRecorder& operator=(const FileRecorder&) = delete;

    /// Makes a call fail with `error` instead of doing anything; a failing "fclose" still closes.
    /// @param count how many such calls succeed before.
    void fail(const std::string& call, int error, int count = 0);

    /// Runs `action` whenever a call is about to begin, such as what another process might do.
    void before(const std::string& call, std::function<void()> action);

    /// The calls, without stat, fchown and "look", which is open of what must already exist.
    const std::vector<std::string>& calls() const { return calls_; }

    /// For the interposed functions: `note` records a call; `begin` runs the actions before it and
    /// returns the error with which it is to fail, or 0.
    void note(const std::string& call) { calls_.push_back(call); }
    int begin(const std::string& call);

private:
    struct Failure {
        std::string call;
        int error;
        int count;
    };
    struct Action {
        std::string call;
        std::function<void()> action;
    };

    std::vector<std::string> calls_;
    std::vector<Failure> failures_;
    std::vector<Action> actions_;
};

} // namespace morvane::test
