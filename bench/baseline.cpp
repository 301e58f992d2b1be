// baseline: the least that a request can cost, directly on libdbus: the same calls of the Parameter
// Handler, the same file with the same renames and syncs, and nothing else. Files are read and
// written in blocks of 64 KiB, memory stays from request to request, and nothing that it reads is
// checked or looked up. It has the one preset PRESET, with the sorted keys of the file KEYS, and
// offers the daemon's methods as org.norvix.baseline.
//
// Usage: baseline PRESET KEYS

#include "bus.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>

namespace {

using namespace morvane::bench;

constexpr const char* parameterHandler = "org.norvix.transaction";
constexpr std::size_t blockSize = std::size_t{64} << 10U; // of what is read or written at once

Message parameterCall(const char* method) {
    return Message(
        dbus_message_new_method_call(parameterHandler, "/transaction", parameterHandler, method));
}

void syncFolder(const std::string& path) {
    const int folder = open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY);
    fsync(folder);
    close(folder);
}

// A commit's answer ends its transaction.
void onCommitted(DBusPendingCall* pending, void* data) {
    auto* const bus = static_cast<DBusConnection*>(data);
    static_cast<void>(Message(dbus_pending_call_steal_reply(pending)));
    const auto end = parameterCall("end");
    append(end.get(), dbus_uint32_t{1});
    call(bus, end);
}

class Baseline {
public:
    Baseline(DBusConnection* bus, const char* preset, const char* keysFile)
        : bus_(bus),
          preset_(preset),
          keys_(readLines(keysFile)) {
        for (const auto& key : keys_)
            keyTexts_.push_back(key.c_str());
    }

    void serve(const Message& request) {
        dbus_bool_t success = perform(request) ? TRUE : FALSE;
        const Message reply(dbus_message_new_method_return(request.get()));
        dbus_message_append_args(reply.get(), DBUS_TYPE_BOOLEAN, &success, DBUS_TYPE_INVALID);
        dbus_connection_send(bus_, reply.get(), nullptr);
    }

private:
    bool perform(const Message& request) {
        const std::string_view method = dbus_message_get_member(request.get());
        DBusMessageIter arguments;
        dbus_message_iter_init(request.get(), &arguments);
        const bool isPreset = preset_ == readString(arguments);
        if (method == "is_preset")
            return isPreset;
        if (method == "in_preset")
            return isPreset && hasAny(arguments);
        if (method == "load_default")
            loadDefault();
        else if (method == "store")
            store(readString(arguments));
        else
            load(readString(arguments), method == "load_with_default");
        return true;
    }

    bool hasAny(DBusMessageIter& arguments) {
        readStrings(arguments, names_);
        return std::ranges::any_of(names_, [this](const char* key) {
            return std::binary_search(keys_.begin(), keys_.end(), key, std::less<>());
        });
    }

    dbus_uint32_t start() { return readNumber(call(bus_, parameterCall("start"))); }

    static Message inTransaction(const char* method, dbus_uint32_t transaction) {
        auto message = parameterCall(method);
        append(message.get(), transaction);
        return message;
    }

    void store(const std::string& path) {
        const auto transaction = start();
        const auto get = inTransaction("get_bulk", transaction);
        append(get.get(), dbus_uint32_t{0}); // no options
        append(get.get(), keyTexts_);
        const auto reply = call(bus_, get);
        DBusMessageIter arguments;
        dbus_message_iter_init(reply.get(), &arguments);
        readStrings(arguments, values_);
        write(path);
        call(bus_, inTransaction("end", transaction));
    }

    void write(const std::string& path) {
        const auto backup = path + "_bak";
        std::rename(path.c_str(), backup.c_str());
        syncFolder(path);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        writeLines(file);
        fsync(file);
        close(file);
        syncFolder(path);
        std::remove(backup.c_str());
        syncFolder(path);
    }

    void writeLines(int file) {
        text_.clear();
        for (std::size_t i = 0; i < keys_.size(); ++i) {
            text_.append(keys_[i]).append(1, '=').append(values_[i]).append(1, '\n');
            if (text_.size() >= blockSize)
                writeBlock(file);
        }
        writeBlock(file);
    }

    void writeBlock(int file) {
        if (::write(file, text_.data(), text_.size()) != std::ssize(text_))
            giveUp("cannot write a file");
        text_.clear();
    }

    void load(const char* path, bool withDefaults) {
        read(path);
        splitLines();
        const auto transaction = start();
        const auto set = inTransaction("set_bulk", transaction);
        append(set.get(), names_);
        append(set.get(), values_);
        call(bus_, set);
        if (withDefaults)
            reset(transaction, allOthers());
        commit(transaction);
    }

    void loadDefault() {
        const auto transaction = start();
        reset(transaction, keyTexts_);
        commit(transaction);
    }

    void commit(dbus_uint32_t transaction) {
        DBusPendingCall* pending = nullptr;
        dbus_connection_send_with_reply(bus_, inTransaction("commit", transaction).get(), &pending,
                                        DBUS_TIMEOUT_INFINITE);
        dbus_pending_call_set_notify(pending, onCommitted, bus_, nullptr);
        dbus_pending_call_unref(pending);
    }

    // The whole file, into `text_`.
    void read(const char* path) {
        const int file = open(path, O_RDONLY);
        std::size_t size = 0;
        for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(count)) {
            if (text_.size() < size + blockSize)
                text_.resize(2 * (size + blockSize));
            count = ::read(file, text_.data() + size, blockSize);
            if (count < 0)
                giveUp("cannot read a file");
        }
        close(file);
        text_[size] = '\0';
    }

    // Every line has a "=" and a line feed, which become the null characters that end its parts.
    void splitLines() {
        names_.clear();
        values_.clear();
        for (char* at = text_.data(); *at != '\0';) {
            names_.push_back(at);
            at = cutAt(at, '=');
            values_.push_back(at);
            at = cutAt(at, '\n');
        }
    }

    static char* cutAt(char* text, char separator) {
        auto* const found = static_cast<char*>(rawmemchr(text, separator));
        *found = '\0';
        return found + 1;
    }

    // The keys that the file does not have. Both are sorted.
    const std::vector<const char*>& allOthers() {
        others_.clear();
        std::size_t next = 0;
        for (const char* const key : keyTexts_) {
            if (next < names_.size() && std::strcmp(names_[next], key) == 0)
                ++next;
            else
                others_.push_back(key);
        }
        return others_;
    }

    void reset(dbus_uint32_t transaction, const std::vector<const char*>& keys) {
        const auto reset = inTransaction("reset_bulk", transaction);
        append(reset.get(), keys);
        call(bus_, reset);
    }

    DBusConnection* bus_;
    std::string_view preset_;
    std::vector<std::string> keys_;
    std::vector<const char*> keyTexts_;

    // Kept, so that a request allocates as little as possible.
    std::string text_; ///< of a file
    std::vector<const char*> names_;
    std::vector<const char*> values_;
    std::vector<const char*> others_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        giveUp("usage: baseline PRESET KEYS");
    DBusConnection* const bus = connect();
    Baseline baseline(bus, argv[1], argv[2]);
    own(bus, "org.norvix.baseline");
    // Replies to asynchronous calls are dispatched, calls are served.
    const auto serve = [](DBusConnection*, DBusMessage* message, void* data) {
        if (dbus_message_get_type(message) != DBUS_MESSAGE_TYPE_METHOD_CALL)
            return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
        static_cast<Baseline*>(data)->serve(Message(dbus_message_ref(message)));
        return DBUS_HANDLER_RESULT_HANDLED;
    };
    dbus_connection_add_filter(bus, serve, &baseline, nullptr);
    while (dbus_connection_read_write_dispatch(bus, -1) != FALSE)
        ;
}
