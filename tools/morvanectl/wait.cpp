#include "wait.h"

#include <chrono>
#include <sstream>
#include <utility>

namespace morvane::ctl {

namespace {

constexpr std::chrono::milliseconds noticeDelay{1000};

OwnedSource startTimer(std::chrono::milliseconds delay, GSourceFunc function, gpointer data) {
    OwnedSource timer(g_timeout_source_new(static_cast<guint>(delay.count())));
    g_source_set_callback(timer.get(), function, data, nullptr);
    g_source_attach(timer.get(), nullptr);
    return timer;
}

} // namespace

std::string withinText(const TimeLimit& limit) {
    std::ostringstream text;
    text << "within " << std::chrono::duration<double>(*limit).count() << " s";
    return text.str();
}

Wait::Wait(std::string what, const Messages& messages, const TimeLimit& limit)
    : what_(std::move(what)),
      messages_(messages),
      limit_(limit),
      notice_(limit && *limit <= noticeDelay ? nullptr : startTimer(noticeDelay, sayWhat, this)),
      end_(limit ? startTimer(*limit, cancel, this) : nullptr) {}

Wait::~Wait() {
    for (auto* const timer : {notice_.get(), end_.get()}) {
        if (timer != nullptr)
            g_source_destroy(timer);
    }
}

void Wait::onResult(GObject* /*source*/, GAsyncResult* result, gpointer wait) {
    auto* const self = static_cast<Wait*>(wait);
    self->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
    g_main_loop_quit(self->loop_.get());
}

void Wait::hurry(std::chrono::milliseconds limit) {
    if (limit_ && *limit_ <= limit)
        return;
    if (end_)
        g_source_destroy(end_.get());
    limit_ = limit;
    end_ = startTimer(limit, cancel, this);
}

GAsyncResult* Wait::result() {
    g_main_loop_run(loop_.get());
    return result_.get();
}

gboolean Wait::sayWhat(gpointer wait) {
    const auto* const self = static_cast<Wait*>(wait);
    self->messages_.note("waiting for " + self->what_);
    return G_SOURCE_REMOVE;
}

gboolean Wait::cancel(gpointer wait) {
    auto* const self = static_cast<Wait*>(wait);
    self->isTimeOver_ = true;
    g_cancellable_cancel(self->cancellable_.get());
    if (G_IS_SOCKET_CONNECTION(self->stream_)) {
        auto* const socket = g_socket_connection_get_socket(G_SOCKET_CONNECTION(self->stream_));
        g_socket_shutdown(socket, TRUE, TRUE, nullptr);
    }
    return G_SOURCE_REMOVE;
}

} // namespace morvane::ctl
