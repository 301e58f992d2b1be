/* Preloaded into the daemon under test: writes its system log and its pauses to a file instead of
 * the machine's log and the test's time, and makes its clock run faster.
 *
 * The file is named by the environment variable MORVANE_TEST_LOG. Each call appends one record:
 * "log PRIORITY LENGTH TEXT" or "sleep SECONDS 0 ", LENGTH counting the bytes of TEXT, which may
 * hold line feeds; every record ends with a line feed of its own.
 *
 * MORVANE_TEST_CLOCK_RATE, a number, makes the monotonic clock run that many times faster, so that
 * timeouts of the bus library expire that much earlier. */

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#define SECOND 1000000000LL /* in nanoseconds */

static void append(const char* kind, int number, const char* text) {
    const char* path = getenv("MORVANE_TEST_LOG");
    char record[70000];
    const int length =
        snprintf(record, sizeof record, "%s %d %zu %s\n", kind, number, strlen(text), text);
    const int file = path ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0 || length >= (int)sizeof record || write(file, record, (size_t)length) != length)
        abort();
    close(file);
}

static void log_message(int priority, const char* format, va_list arguments) {
    char text[65536];
    vsnprintf(text, sizeof text, format, arguments);
    append("log", priority, text);
}

__attribute__((format(printf, 2, 3))) void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    log_message(priority, format, arguments);
    va_end(arguments);
}

/* What syslog becomes in a build with _FORTIFY_SOURCE. */
__attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int flag, const char* format,
                                                        ...);
void __syslog_chk(int priority, int flag, const char* format, ...) {
    (void)flag;
    va_list arguments;
    va_start(arguments, format);
    log_message(priority, format, arguments);
    va_end(arguments);
}

unsigned sleep(unsigned seconds) {
    append("sleep", (int)seconds, "");
    return 0;
}

static long clock_rate(void) {
    const char* text = getenv("MORVANE_TEST_CLOCK_RATE");
    return text ? strtol(text, NULL, 10) : 1;
}

/* A time of the monotonic clock, in nanoseconds, as the faster clock shows it. */
static long long faster(long long nanoseconds) {
    static long long first;
    if (first == 0)
        first = nanoseconds;
    return first + (nanoseconds - first) * clock_rate();
}

int poll(struct pollfd* descriptors, nfds_t count, int milliseconds) {
    if (milliseconds > 0)
        milliseconds = (int)((milliseconds - 1) / clock_rate()) + 1;
    return ((__typeof__(poll)*)dlsym(RTLD_NEXT, "poll"))(descriptors, count, milliseconds);
}

/* Replaces the functions that take times in seconds and nanoseconds of a type, whose symbols these
 * are. */
#define REPLACE_CLOCK(clock_function, clock_symbol, poll_function, poll_symbol, type)              \
    int clock_function(clockid_t clock, __typeof__(type)* time) __asm__(clock_symbol);             \
    int clock_function(clockid_t clock, __typeof__(type)* time) {                                  \
        const int result =                                                                         \
            ((__typeof__(clock_function)*)dlsym(RTLD_NEXT, clock_symbol))(clock, time);            \
        if (result == 0 && clock == CLOCK_MONOTONIC) {                                             \
            const long long shown = faster(time->tv_sec * SECOND + time->tv_nsec);                 \
            time->tv_sec = (__typeof__(time->tv_sec))(shown / SECOND);                             \
            time->tv_nsec = (__typeof__(time->tv_nsec))(shown % SECOND);                           \
        }                                                                                          \
        return result;                                                                             \
    }                                                                                              \
    int poll_function(struct pollfd* descriptors, nfds_t count, const type* timeout,               \
                      const sigset_t* signals) __asm__(poll_symbol);                               \
    int poll_function(struct pollfd* descriptors, nfds_t count, const type* timeout,               \
                      const sigset_t* signals) {                                                   \
        type shorter = {0};                                                                        \
        if (timeout) {                                                                             \
            const long long wait = (timeout->tv_sec * SECOND + timeout->tv_nsec) / clock_rate();   \
            shorter.tv_sec = (__typeof__(shorter.tv_sec))(wait / SECOND);                          \
            shorter.tv_nsec = (__typeof__(shorter.tv_nsec))(wait % SECOND);                        \
        }                                                                                          \
        return ((__typeof__(poll_function)*)dlsym(RTLD_NEXT, poll_symbol))(                        \
            descriptors, count, timeout ? &shorter : NULL, signals);                               \
    }

#if __TIMESIZE == 32 /* where programs and libraries may use the one type or the other */
struct short_time {
    int32_t tv_sec;
    int32_t tv_nsec;
};
REPLACE_CLOCK(short_clock, "clock_gettime", short_poll, "ppoll", struct short_time)
REPLACE_CLOCK(long_clock, "__clock_gettime64", long_poll, "__ppoll64", struct timespec)
#else
REPLACE_CLOCK(replaced_clock, "clock_gettime", replaced_poll, "ppoll", struct timespec)
#endif
