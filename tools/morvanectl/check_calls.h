// The calls of one check of a Parameter Handler.
#pragma once

#include "handler_check.h"
#include "handler_methods.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace morvane::ctl {

/// Makes calls one after the other, in one transaction or outside. After the first that does not
/// succeed, the others are not made: a check says what it wants to do, and asks once at its end
/// whether all of that was done.
class Calls {
public:
    explicit Calls(CheckContext& context, Caller caller = Caller::self)
        : context_(context),
          caller_(caller) {}

    /// Ends the transaction, if it is open.
    ~Calls();
    Calls(const Calls&) = delete;
    Calls& operator=(const Calls&) = delete;

    /// Starts the transaction in which the methods that need one are called.
    std::uint32_t start();
    void commit();
    void end();

    using Texts = std::vector<std::string>;

    /// Sets keys to values, by a method for one or for several.
    void set(const char* method, const Texts& keys, const Texts& values);
    void reset(const char* method, const Texts& keys);

    /// @return one value for each key, or nothing after a failure.
    Texts get(const char* method, const Texts& keys);
    bool checkSet(const char* method, const std::string& key, const std::string& value);

    /// Sets a key to a value that may be refused.
    /// @return the error that answered it; nothing if there was none, or no answer, which is a
    ///         failure.
    std::optional<std::string> trySet(const char* method, const std::string& key,
                                      const std::string& value);

    /// Any method, in the transaction `start()` has opened or the one that is given.
    Reply call(const char* method, std::initializer_list<GVariant*> arguments,
               std::optional<std::uint32_t> transaction = std::nullopt);

    /// What a stranger to the transaction reads, by whatever method works.
    Texts read(const Texts& keys);

    bool succeeded() const { return whyFailed_.empty(); }
    const std::string& whyFailed() const { return whyFailed_; }

    /// Gives the check up for a reason that says nothing against the Parameter Handler.
    void giveUp(std::string why);

    /// The result, if all calls have succeeded; otherwise that of the one that has not.
    CheckResult result(bool passes, std::string seen) const;

private:
    GVariant* argumentsOf(const HandlerMethod& method, std::initializer_list<GVariant*> arguments,
                          std::uint32_t transaction) const;
    Reply callUnlessFailed(const char* method, std::initializer_list<GVariant*> arguments);

    CheckContext& context_;
    Caller caller_;
    std::optional<std::uint32_t> transaction_;
    std::string whyFailed_;
    bool isNotChecked_ = false; ///< it failed for a reason that another check is about
};

/// "a=1, b=2"
std::string assignmentsText(const Calls::Texts& keys, const Calls::Texts& values);

} // namespace morvane::ctl
