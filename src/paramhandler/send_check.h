// Checks the strings of a request before they are sent: libdbus ends a process that sends anything
// but UTF-8, and the bus disconnects one that sends more than it accepts (64 MiB per array, 128 MiB
// per message).
#pragma once

#include "text/request_texts.h"

namespace morvane {

/// Whether every call of a request may be sent. Logs the first reason why one may not.
bool isSendable(const RequestTexts& texts);

} // namespace morvane
