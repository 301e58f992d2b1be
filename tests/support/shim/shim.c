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
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#define ORIGINAL(name) ((__typeof__(name)*)dlsym(RTLD_NEXT, #name))

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

int clock_gettime(clockid_t clock, struct timespec* time) {
    static struct timespec first;
    const int result = ORIGINAL(clock_gettime)(clock, time);
    const long rate = clock_rate();
    if (result != 0 || clock != CLOCK_MONOTONIC || rate == 1)
        return result;
    if (first.tv_sec == 0)
        first = *time;
    const long long nanoseconds =
        ((time->tv_sec - first.tv_sec) * 1000000000LL + time->tv_nsec) * rate;
    time->tv_sec = first.tv_sec + (time_t)(nanoseconds / 1000000000);
    time->tv_nsec = (long)(nanoseconds % 1000000000);
    return 0;
}

int poll(struct pollfd* descriptors, nfds_t count, int milliseconds) {
    if (milliseconds > 0)
        milliseconds = (int)((milliseconds - 1) / clock_rate()) + 1;
    return ORIGINAL(poll)(descriptors, count, milliseconds);
}
