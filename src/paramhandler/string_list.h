// The strings of a call to the Parameter Handler.
#pragma once

#include "glib/glib_owned.h"
#include "text/c_string_view.h"

#include <cstddef>
#include <memory>

namespace morvane {

/// A null-terminated array of C strings over texts that stay where they are: one allocation for
/// the whole list, nothing copied.
class StringList {
public:
    /// Waits and tries again, without limit, while there is no memory.
    ///
    /// @param capacity        how many texts will be added.
    /// @param outOfMemoryText logged each time the allocation fails.
    StringList(std::size_t capacity, const char* outOfMemoryText);

    /// Appends a text, at most `capacity` times.
    /// @param text borrowed; must outlive the list, and be UTF-8 (see `isSendable`).
    void add(CStringView text);

    std::size_t size() const { return size_; }
    const gchar* front() const { return array_.get()[0]; }

    /// Null-terminated, for a call that does not change it.
    gchar** array() const { return array_.get(); }

private:
    std::unique_ptr<gchar*, ReleasedBy<g_free>> array_;
    std::size_t size_ = 0;
};

} // namespace morvane
