#include "paramhandler/string_list.h"

#include "text/utf8.h"

#include <dbus/dbus.h>

#include <syslog.h>

namespace morvane {

namespace {

// What a message may need beside its strings: the header, with a sender that the bus adds, and the
// arguments of fixed size.
constexpr std::size_t messageOverhead = 4096;

gchar** allocateArray(std::size_t size, const char* outOfMemoryText) {
    constexpr gulong pauseMicroseconds = 500;
    for (;;) {
        // g_malloc would end the process, where waiting for memory serves the client better.
        if (auto* const array = g_try_new0(gchar*, size))
            return array;
        syslog(LOG_ERR, "%s", outOfMemoryText);
        g_usleep(pauseMicroseconds);
    }
}

} // namespace

void SendCheck::add(std::string_view text) {
    // A string begins at a multiple of 4 with its length of 4 bytes and ends with a byte 0.
    sizeOnBus_ = (sizeOnBus_ + 3) / 4 * 4 + 4 + text.size() + 1;
    if (!notUtf8_ && !isUtf8(text))
        notUtf8_ = text;
}

std::string unsendableReason(std::initializer_list<const SendCheck*> arguments) {
    std::size_t messageSize = messageOverhead;
    for (const auto* const argument : arguments) {
        if (const auto text = argument->notUtf8())
            return "not valid UTF-8: " + printableText(*text);
        if (argument->sizeOnBus() > DBUS_MAXIMUM_ARRAY_LENGTH)
            return "more than the bus carries in one list";
        messageSize += argument->sizeOnBus();
    }
    if (messageSize > DBUS_MAXIMUM_MESSAGE_LENGTH)
        return "more than the bus carries in one message";
    return {};
}

StringList::StringList(std::size_t capacity, const char* outOfMemoryText)
    : array_(allocateArray(capacity + 1, outOfMemoryText)) {}

void StringList::add(BorrowedText text) {
    check_.add(text.view());
    array_.get()[size_++] = const_cast<gchar*>(text.c_str()); // never written to
}

} // namespace morvane
