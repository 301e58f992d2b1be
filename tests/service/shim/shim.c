/* Preloaded into the daemon under test: writes its system log and its pauses to a file instead of
 * the machine's log and the test's time.
 *
 * The file is named by the environment variable MORVANE_TEST_LOG. Each call appends one record:
 * "log PRIORITY LENGTH TEXT" or "sleep SECONDS 0 ", LENGTH counting the bytes of TEXT, which may
 * hold line feeds; every record ends with a line feed of its own. */

#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

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
