// Waiting for the bus or a service: never silently, and no longer than the user wants.
#pragma once

#include "glib/glib_owned.h"
#include "output.h"
#include "settings.h"

#include <gio/gio.h>

#include <memory>
#include <string>

namespace morvane::ctl {

/// "within 1.5 s"
std::string withinText(const TimeLimit& limit);

using OwnedLoop = std::unique_ptr<GMainLoop, ReleasedBy<g_main_loop_unref>>;
using OwnedCancellable = std::unique_ptr<GCancellable, ReleasedBy<g_object_unref>>;
using OwnedResult = std::unique_ptr<GAsyncResult, ReleasedBy<g_object_unref>>;
using OwnedSource = std::unique_ptr<GSource, ReleasedBy<g_source_unref>>;

/// One thing that is waited for, in one asynchronous operation of GIO or several. After a second,
/// standard error says what it is; when the time is over, the operation is cancelled.
///
/// An operation is started with `cancellable()`, `Wait::onResult` and the object's address, and
/// finished with what `result()` returns.
class Wait {
public:
    /// @param what     follows "waiting for ".
    /// @param messages borrowed for the life of the object.
    Wait(std::string what, const Messages& messages, const TimeLimit& limit);
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;
    ~Wait();

    static void onResult(GObject* source, GAsyncResult* result, gpointer wait);

    GCancellable* cancellable() { return cancellable_.get(); }

    /// From now on, the end of the time ends the connection, too: GDBus does not let the first call
    /// on one be cancelled.
    /// @param stream borrowed for the life of the object.
    void endWithTime(GIOStream* stream) { stream_ = stream; }

    /// Waits for the operation that was started last. That the time was over does not mean that it
    /// has failed.
    /// @return what finishes it; borrowed until the next call.
    GAsyncResult* result();

    bool isTimeOver() const { return isTimeOver_; }

    /// Waits no longer than this from now on; a shorter limit stays.
    void hurry(std::chrono::milliseconds limit);

    /// The limit that counts.
    const TimeLimit& limit() const { return limit_; }

private:
    static gboolean sayWhat(gpointer wait);
    static gboolean cancel(gpointer wait);

    std::string what_;
    const Messages& messages_;
    TimeLimit limit_;
    OwnedLoop loop_{g_main_loop_new(nullptr, FALSE)};
    OwnedCancellable cancellable_{g_cancellable_new()};
    OwnedSource notice_; ///< null if the time is over before
    OwnedSource end_;    ///< null without a limit
    OwnedResult result_;
    GIOStream* stream_ = nullptr;
    bool isTimeOver_ = false;
};

} // namespace morvane::ctl
