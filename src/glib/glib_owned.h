// Owners of what GLib hands out.
#pragma once

#include <glib.h>

#include <memory>

namespace morvane {

/// A deleter made from the C library's own release function.
template <auto Release>
struct ReleasedBy {
    void operator()(auto* handle) const noexcept { Release(handle); }
};

using OwnedError = std::unique_ptr<GError, ReleasedBy<g_error_free>>;
using OwnedText = std::unique_ptr<gchar, ReleasedBy<g_free>>;
using OwnedTexts = std::unique_ptr<gchar*, ReleasedBy<g_strfreev>>;

} // namespace morvane
