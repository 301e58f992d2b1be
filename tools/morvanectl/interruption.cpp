#include "interruption.h"

#include <glib-unix.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace morvane::ctl {

Interruption::Interruption(std::function<void()> onSignal) : onSignal_(std::move(onSignal)) {
    constexpr std::array signals{SIGINT, SIGTERM, SIGHUP};
    std::transform(signals.begin(), signals.end(), sources_.begin(),
                   [this](int number) { return g_unix_signal_add(number, noteSignal, this); });
}

Interruption::~Interruption() {
    for (const auto source : sources_)
        g_source_remove(source);
}

gboolean Interruption::noteSignal(gpointer interruption) {
    auto* const self = static_cast<Interruption*>(interruption);
    self->hasCome_ = true;
    if (self->onSignal_)
        self->onSignal_();
    return G_SOURCE_CONTINUE;
}

bool Interruption::hasComeByNow() const {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        // each may be a signal
    }
    return hasCome_;
}

} // namespace morvane::ctl
