// What the programs that measure share: plain libdbus, with as little around it as possible.
#pragma once

#include <dbus/dbus.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::bench {

struct MessageReleaser {
    void operator()(DBusMessage* message) const noexcept { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, MessageReleaser>;

/// Ends the process with a message about what went wrong.
[[noreturn]] inline void giveUp(const std::string& what) {
    std::fprintf(stderr, "bench: %s\n", what.c_str());
    std::exit(EXIT_FAILURE);
}

/// Connects to the session bus; messages may be as big as the bus allows.
inline DBusConnection* connect() {
    DBusConnection* const bus = dbus_bus_get(DBUS_BUS_SESSION, nullptr);
    if (bus == nullptr)
        giveUp("no session bus");
    return bus;
}

/// Acquires a bus name.
inline void own(DBusConnection* bus, const char* name) {
    if (dbus_bus_request_name(bus, name, DBUS_NAME_FLAG_DO_NOT_QUEUE, nullptr) !=
        DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        giveUp("another process owns the name");
}

/// Sends a call and waits for its reply, however long it takes.
inline Message call(DBusConnection* bus, const Message& message) {
    Message reply(dbus_connection_send_with_reply_and_block(bus, message.get(),
                                                            DBUS_TIMEOUT_INFINITE, nullptr));
    if (!reply)
        giveUp("a call failed");
    return reply;
}

/// Appends null-terminated strings.
inline void append(DBusMessage* message, std::span<const char* const> texts) {
    DBusMessageIter arguments;
    DBusMessageIter list;
    dbus_message_iter_init_append(message, &arguments);
    dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING_AS_STRING,
                                     &list);
    for (const char* const text : texts)
        dbus_message_iter_append_basic(&list, DBUS_TYPE_STRING, &text);
    dbus_message_iter_close_container(&arguments, &list);
}

inline void append(DBusMessage* message, dbus_uint32_t number) {
    dbus_message_append_args(message, DBUS_TYPE_UINT32, &number, DBUS_TYPE_INVALID);
}

inline void append(DBusMessage* message, const char* text) {
    dbus_message_append_args(message, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
}

/// The number that a reply consists of.
inline dbus_uint32_t readNumber(const Message& reply) {
    dbus_uint32_t number = 0;
    if (!dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_UINT32, &number, DBUS_TYPE_INVALID))
        giveUp("a reply is not a number");
    return number;
}

/// Reads a string argument of a message and moves on to the next argument.
/// @return a pointer into the message.
inline const char* readString(DBusMessageIter& arguments) {
    const char* text = nullptr;
    dbus_message_iter_get_basic(&arguments, &text);
    dbus_message_iter_next(&arguments);
    return text;
}

/// Reads a list of strings in the same way.
/// @param texts replaced by pointers into the message.
inline void readStrings(DBusMessageIter& arguments, std::vector<const char*>& texts) {
    texts.clear();
    DBusMessageIter list;
    dbus_message_iter_recurse(&arguments, &list);
    while (dbus_message_iter_get_arg_type(&list) == DBUS_TYPE_STRING)
        texts.push_back(readString(list));
    dbus_message_iter_next(&arguments);
}

/// The lines of a file without their line feeds.
inline std::vector<std::string> readLines(const char* path) {
    std::vector<std::string> lines;
    std::FILE* const file = std::fopen(path, "r");
    if (file == nullptr)
        giveUp("cannot read a file");
    char buffer[1024];
    while (std::fgets(buffer, sizeof buffer, file) != nullptr) {
        lines.emplace_back(buffer);
        lines.back().pop_back();
    }
    std::fclose(file);
    return lines;
}

} // namespace morvane::bench
