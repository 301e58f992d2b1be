// What must be known of the strings of a request before they may be sent: libdbus ends a process
// that sends anything but UTF-8, and the bus cuts the connection of one that sends more than it
// takes (64 MiB an array, 128 MiB a message).
#pragma once

#include "text/request_texts.h"

namespace morvane {

/// Whether every call of a request may be sent. Logs the first reason why one may not.
bool isSendable(const RequestTexts& texts);

} // namespace morvane
