// The strings of a call to the Parameter Handler.
#pragma once

#include "paramhandler/glib_owned.h"
#include "text/borrowed_text.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace morvane {

/// What must be known of the strings of one argument before they may be sent.
class SendCheck {
public:
    /// @param text borrowed; must outlive the check.
    void add(std::string_view text);

    /// The bytes that the strings take as an array on the bus.
    std::size_t sizeOnBus() const { return sizeOnBus_; }

    /// The first string that is not valid UTF-8.
    std::optional<std::string_view> notUtf8() const { return notUtf8_; }

private:
    std::size_t sizeOnBus_ = 0;
    std::optional<std::string_view> notUtf8_;
};

/// Says why a call with these arguments must not be sent: libdbus ends a process that sends
/// anything but UTF-8, and the bus cuts the connection of one that sends more than it takes (64 MiB
/// an array, 128 MiB a message).
///
/// @return the reason, made printable; empty if the call may be sent.
std::string unsendableReason(std::initializer_list<const SendCheck*> arguments);

/// A null-terminated array of C strings over texts that stay where they are: one allocation for
/// the whole list, nothing copied.
class StringList {
public:
    /// Waits and tries again, without limit, while there is no memory.
    ///
    /// @param capacity        how many texts will be added.
    /// @param outOfMemoryText logged at each failure of the allocation.
    StringList(std::size_t capacity, const char* outOfMemoryText);

    /// Appends a text, at most `capacity` times.
    /// @param text borrowed; must outlive the list.
    void add(BorrowedText text);

    std::size_t size() const { return size_; }
    const gchar* front() const { return array_.get()[0]; }

    /// Null-terminated, for a call that does not change it.
    gchar** array() const { return array_.get(); }

    const SendCheck& check() const { return check_; }

private:
    std::unique_ptr<gchar*, ReleasedBy<g_free>> array_;
    std::size_t size_ = 0;
    SendCheck check_;
};

} // namespace morvane
