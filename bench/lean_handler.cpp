// lean_handler: a Parameter Handler for measuring, that costs as little as one can. It has the keys
// of the file KEYS, each with a value, and knows no definitions, conditions or transactions: what
// is set is set at once. Its own method open_transactions answers how many have not ended.
//
// Usage: lean_handler KEYS

#include "bus.h"

#include <unordered_map>

namespace {

using namespace morvane::bench;

class Handler {
public:
    Handler(DBusConnection* bus, const char* keys_file) : bus_(bus) {
        for (auto& key : readLines(keys_file))
            values_.emplace(std::move(key), "-60");
    }

    void serve(const Message& call) {
        const std::string_view method = dbus_message_get_member(call.get());
        const Message reply(dbus_message_new_method_return(call.get()));
        DBusMessageIter arguments;
        dbus_message_iter_init(call.get(), &arguments);
        if (method == "start") {
            ++transaction_;
            append(reply.get(), transaction_);
        } else if (method == "end") {
            ++ended_;
        } else if (method == "open_transactions") {
            append(reply.get(), transaction_ - ended_);
        } else if (method == "get_bulk") {
            dbus_message_iter_next(&arguments);
            dbus_message_iter_next(&arguments);
            get(arguments, reply.get());
        } else if (method.starts_with("set") && method.ends_with("bulk")) {
            dbus_message_iter_next(&arguments);
            set(arguments);
        }
        dbus_connection_send(bus_, reply.get(), nullptr);
    }

private:
    void get(DBusMessageIter& arguments, DBusMessage* reply) {
        std::vector<const char*> texts = readStrings(arguments);
        for (auto& text : texts)
            text = values_[text].c_str();
        append(reply, texts);
    }

    void set(DBusMessageIter& arguments) {
        const auto keys = readStrings(arguments);
        const auto values = readStrings(arguments);
        for (std::size_t i = 0; i < keys.size(); ++i)
            values_[keys[i]] = values[i];
    }

    DBusConnection* bus_;
    dbus_uint32_t transaction_ = 0;
    dbus_uint32_t ended_ = 0;
    std::unordered_map<std::string, std::string> values_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        giveUp("usage: lean_handler KEYS");
    DBusConnection* const bus = connect();
    Handler handler(bus, argv[1]);
    own(bus, "org.norvix.transaction");
    serveCalls(bus, [&](const Message& call) { handler.serve(call); });
}
