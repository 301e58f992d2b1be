// request_client: calls services, interleaved, and measures each call. While it waits it is itself
// their Parameter Handler, one that costs as little as possible: it has the keys of the file KEYS,
// each with a value, and knows no definitions, conditions or transactions: what is set is set at
// once.
//
// Usage: request_client KEYS ROUNDS METHOD PRESET FILE|KEY SERVICE...
//
// in_preset is called with PRESET and KEY, is_preset and load_default with PRESET alone, all other
// methods with PRESET and FILE. Prints a line for each round: for each SERVICE the elapsed time of
// the call and the CPU time that the service spends on it, in nanoseconds.

#include "bus.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <unordered_map>

namespace {

using namespace morvane::bench;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds nap{1};
constexpr std::chrono::seconds patience{120}; // under callgrind, too

/// The Parameter Handler's values and answers.
class Parameters {
public:
    explicit Parameters(const char* keysFile) {
        for (auto& key : readLines(keysFile))
            values_.emplace(std::move(key), "-60");
    }

    /// How many transactions have not ended.
    dbus_uint32_t openTransactions() const { return started_ - ended_; }

    Message answer(const Message& call) {
        const std::string_view method = dbus_message_get_member(call.get());
        Message reply(dbus_message_new_method_return(call.get()));
        DBusMessageIter arguments;
        dbus_message_iter_init(call.get(), &arguments);
        if (method == "start") {
            append(reply.get(), ++started_);
        } else if (method == "end") {
            ++ended_;
        } else if (method == "get_bulk") {
            dbus_message_iter_next(&arguments); // the transaction
            dbus_message_iter_next(&arguments); // the option
            get(arguments, reply.get());
        } else if (method.starts_with("set") && method.ends_with("bulk")) {
            dbus_message_iter_next(&arguments); // the transaction
            set(arguments);
        }
        return reply;
    }

private:
    void get(DBusMessageIter& arguments, DBusMessage* reply) {
        readStrings(arguments, keys_);
        for (auto& text : keys_)
            text = values_[text].c_str();
        append(reply, keys_);
    }

    void set(DBusMessageIter& arguments) {
        readStrings(arguments, keys_);
        readStrings(arguments, newValues_);
        for (std::size_t i = 0; i < keys_.size(); ++i)
            values_[keys_[i]] = newValues_[i];
    }

    dbus_uint32_t started_ = 0;
    dbus_uint32_t ended_ = 0;
    std::unordered_map<std::string, std::string> values_;
    std::vector<const char*> keys_;      ///< of the current call
    std::vector<const char*> newValues_; ///< of the current call
};

/// The connection over which services are called, and call their Parameter Handler.
class Client {
public:
    Client(DBusConnection* bus, const char* keysFile) : bus_(bus), parameters_(keysFile) {}

    /// Sends a call, and serves those that arrive until its reply does, which may be an error.
    Message call(const Message& request) {
        dbus_uint32_t serial = 0;
        dbus_connection_send(bus_, request.get(), &serial);
        for (const auto end = Clock::now() + patience; Clock::now() < end; wait(patience)) {
            while (Message message{dbus_connection_pop_message(bus_)}) {
                if (dbus_message_get_reply_serial(message.get()) == serial)
                    return message;
                serve(message);
            }
        }
        giveUp("a service does not answer");
    }

    /// Whether no transaction is open, and none was while nothing arrived for a nap.
    bool isQuiet() {
        wait(nap);
        bool quiet = parameters_.openTransactions() == 0;
        while (const Message message{dbus_connection_pop_message(bus_)}) {
            serve(message);
            quiet = false;
        }
        return quiet;
    }

private:
    void wait(std::chrono::milliseconds limit) {
        if (dbus_connection_read_write(bus_, static_cast<int>(limit.count())) == FALSE)
            giveUp("the bus is gone");
    }

    void serve(const Message& message) {
        if (dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL)
            dbus_connection_send(bus_, parameters_.answer(message).get(), nullptr);
    }

    DBusConnection* bus_;
    Parameters parameters_;
};

struct Arguments {
    std::string method;
    const char* preset;
    const char* fileOrKey;

    bool isQuery() const { return method.ends_with("_preset"); }
};

class Service {
public:
    Service(DBusConnection* bus, const char* name) : name_(name) {
        const Message message(dbus_message_new_method_call(
            DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetConnectionUnixProcessID"));
        append(message.get(), name_);
        process_ = "/proc/" + std::to_string(readNumber(call(bus, message)));
    }

    /// Measures a call, and prints its elapsed and its CPU time.
    void measure(Client& client, const Arguments& arguments) const {
        const auto request = requestOf(arguments);
        const auto cpuBefore = cpuTime();
        const auto begin = Clock::now();
        const auto reply = client.call(request);
        const std::chrono::nanoseconds elapsed = Clock::now() - begin;
        requireTrue(reply);
        settle(client, arguments.isQuery());
        std::printf("%lld %lld ", static_cast<long long>(elapsed.count()), cpuTime() - cpuBefore);
    }

private:
    Message requestOf(const Arguments& arguments) const {
        Message message(dbus_message_new_method_call(name_, "/preset", "org.norvix.preset",
                                                     arguments.method.c_str()));
        append(message.get(), arguments.preset);
        if (arguments.method == "in_preset")
            append(message.get(), std::span(&arguments.fileOrKey, 1));
        else if (arguments.method != "is_preset" && arguments.method != "load_default")
            append(message.get(), arguments.fileOrKey);
        return message;
    }

    void requireTrue(const Message& reply) const {
        dbus_bool_t success = FALSE;
        DBusError error = DBUS_ERROR_INIT;
        if (dbus_set_error_from_message(&error, reply.get()) != FALSE ||
            dbus_message_get_args(reply.get(), &error, DBUS_TYPE_BOOLEAN, &success,
                                  DBUS_TYPE_INVALID) == FALSE)
            giveUp(std::string(name_) + " answered with an error: " + error.message);
        if (success == FALSE)
            giveUp(std::string(name_) + " answered FALSE");
    }

    // What comes after the answer counts for this call: the end of the transaction, unless it was a
    // question, which has none, and whatever the process does until it sleeps. The process
    // itself is not queried, since that would count too.
    void settle(Client& client, bool isQuery) const {
        const auto end = Clock::now() + patience;
        while (!(isQuery || client.isQuiet()) || !isAsleep()) {
            if (Clock::now() > end)
                giveUp(std::string(name_) + " does not come to rest");
        }
    }

    bool isAsleep() const {
        std::ifstream file(process_ + "/stat");
        const std::string text(std::istreambuf_iterator<char>(file), {});
        const auto nameEnd = text.rfind(") ");
        if (nameEnd == std::string::npos)
            giveUp(std::string(name_) + " has ended");
        return text[nameEnd + 2] == 'S';
    }

    // In nanoseconds. Each service has one thread.
    long long cpuTime() const {
        long long time = 0;
        if (!(std::ifstream(process_ + "/schedstat") >> time))
            giveUp(std::string(name_) + " has ended");
        return time;
    }

    const char* name_;
    std::string process_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 7)
        giveUp("usage: request_client KEYS ROUNDS METHOD PRESET FILE|KEY SERVICE...");
    DBusConnection* const bus = connect();
    std::vector<Service> services;
    for (char** name = argv + 6; *name != nullptr; ++name)
        services.emplace_back(bus, *name);
    Client client(bus, argv[1]);
    own(bus, "org.norvix.transaction");
    for (auto round = std::strtol(argv[2], nullptr, 10); round > 0; --round) {
        for (const auto& service : services)
            service.measure(client, {argv[3], argv[4], argv[5]});
        std::printf("\n");
    }
}
