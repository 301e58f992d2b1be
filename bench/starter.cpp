// starter: starts programs in turns and measures each start: that of the first program, which takes
// the daemon's name, until the name is owned, when it is killed; those of the others until they
// end.
//
// Usage: starter ROUNDS PROGRAM [ARGUMENT...] [-- PROGRAM [ARGUMENT...]]...
//
// Prints a line for each round: for each program the time that passed and the time that it
// computed, user and system, in nanoseconds.

#include "bus.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

namespace {

using namespace morvane::bench;
using Clock = std::chrono::steady_clock;
using Command = std::vector<char*>; // ends with a null pointer, as the arguments of exec do

constexpr const char* daemon_name = "org.norvix.preset";

std::vector<Command> commands_of(char** arguments) {
    std::vector<Command> commands(1);
    for (; *arguments != nullptr; ++arguments) {
        if (std::string_view(*arguments) == "--")
            commands.emplace_back();
        else
            commands.back().push_back(*arguments);
    }
    for (auto& command : commands) {
        if (command.empty())
            giveUp("usage: starter ROUNDS PROGRAM [ARGUMENT...] [-- PROGRAM [ARGUMENT...]]...");
        command.push_back(nullptr);
    }
    return commands;
}

pid_t start(const Command& command) {
    pid_t process = 0;
    if (posix_spawn(&process, command[0], nullptr, nullptr, command.data(), environ) != 0)
        giveUp("cannot start a program");
    return process;
}

void follow_name(DBusConnection* bus) {
    const auto rule =
        std::string("type='signal',member='NameOwnerChanged',arg0='") + daemon_name + "'";
    dbus_bus_add_match(bus, rule.c_str(), nullptr);
    dbus_connection_flush(bus);
}

// Whether a message says that the name has an owner now, or none any more.
bool says(DBusMessage* message, bool owned) {
    const char* name = "";
    const char* old_owner = "";
    const char* new_owner = "";
    return dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") != FALSE &&
           dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING,
                                 &old_owner, DBUS_TYPE_STRING, &new_owner,
                                 DBUS_TYPE_INVALID) != FALSE &&
           std::string_view(name) == daemon_name && (*new_owner != '\0') == owned;
}

void wait_for_name(DBusConnection* bus, bool owned, pid_t process) {
    constexpr int look_after_milliseconds = 1000;
    for (;;) {
        if (dbus_connection_read_write(bus, look_after_milliseconds) == FALSE)
            giveUp("the bus is gone");
        while (const Message message{dbus_connection_pop_message(bus)}) {
            if (says(message.get(), owned))
                return;
        }
        siginfo_t state{};
        if (owned &&
            (waitid(P_PID, static_cast<id_t>(process), &state, WEXITED | WNOHANG | WNOWAIT) != 0 ||
             state.si_pid == process))
            giveUp("the daemon ended before it had its name");
    }
}

std::chrono::nanoseconds duration(const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

/// Waits for the end of a process. `success` says whether it is an end as it should be.
template <typename Success>
std::chrono::nanoseconds computing_time(pid_t process, Success success) {
    int status = 0;
    rusage usage{};
    if (wait4(process, &status, 0, &usage) != process || !success(status))
        giveUp("a program failed");
    return duration(usage.ru_utime) + duration(usage.ru_stime);
}

void print(std::chrono::nanoseconds passed, std::chrono::nanoseconds computed) {
    std::printf("%lld %lld ", static_cast<long long>(passed.count()),
                static_cast<long long>(computed.count()));
}

void measure_daemon(DBusConnection* bus, const Command& command) {
    const auto begin = Clock::now();
    const auto process = start(command);
    wait_for_name(bus, true, process);
    const auto passed = Clock::now() - begin;
    kill(process, SIGKILL);
    const auto computed = computing_time(process, [](int status) { return WIFSIGNALED(status); });
    wait_for_name(bus, false, process);
    print(passed, computed);
}

void measure_program(const Command& command) {
    const auto begin = Clock::now();
    const auto process = start(command);
    const auto computed = computing_time(
        process, [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) == 0; });
    print(Clock::now() - begin, computed);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3)
        giveUp("usage: starter ROUNDS PROGRAM [ARGUMENT...] [-- PROGRAM [ARGUMENT...]]...");
    DBusConnection* const bus = connect();
    follow_name(bus);
    const auto commands = commands_of(argv + 2);
    for (auto round = std::strtol(argv[1], nullptr, 10); round > 0; --round) {
        measure_daemon(bus, commands.front());
        for (std::size_t i = 1; i < commands.size(); ++i)
            measure_program(commands[i]);
        std::printf("\n");
    }
}
