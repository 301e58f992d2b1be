// What must be known of the strings of a request before they may be sent: libdbus ends a process
// that sends anything but UTF-8, and the bus cuts the connection of one that sends more than it
// takes (64 MiB an array, 128 MiB a message).
#pragma once

#include "text/request_texts.h"

#include <cstddef>
#include <string_view>

namespace morvane {

/// Counts the bytes that strings take as an array on the bus.
class ArraySize {
public:
    void add(std::string_view text);
    std::size_t bytes() const { return bytes_; }

private:
    std::size_t bytes_ = 0;
};

/// Whether every call of a request may be sent. Logs the first reason why one may not.
bool isSendable(const RequestTexts& texts);

} // namespace morvane
