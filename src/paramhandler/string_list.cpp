#include "paramhandler/string_list.h"

#include "text/utf8.h"

#include <syslog.h>

#include <cassert>

namespace morvane {

namespace {

gchar** allocateArray(std::size_t size, const char* outOfMemoryText) {
    constexpr gulong pauseMicroseconds = 500;
    for (;;) {
        // g_malloc would end the process; waiting for memory serves the client better.
        if (auto* const array = g_try_new0(gchar*, size))
            return array;
        syslog(LOG_ERR, "%s", outOfMemoryText);
        g_usleep(pauseMicroseconds);
    }
}

} // namespace

StringList::StringList(std::size_t capacity, const char* outOfMemoryText)
    : array_(allocateArray(capacity + 1, outOfMemoryText)) {}

void StringList::add(CStringView text) {
    assert(isUtf8(text.view()));
    array_.get()[size_++] = const_cast<gchar*>(text.c_str()); // never written to
}

} // namespace morvane
