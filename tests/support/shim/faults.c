/* Makes a chosen operation of the daemon under test fail, or kills the daemon before it.
 *
 * MORVANE_TEST_FAULT says which and how: "FUNCTION N ACTION". FUNCTION is one of those below, or
 * "any" for all of those on files. The fault hits its N-th call, from 1, on a path that begins with
 * MORVANE_TEST_FAULT_PATH or on the folder of that path. Calls of malloc are counted from the first
 * such operation on a file. ACTION is "kill", or the number of the error to fail with. */

#include "support/c_library_names.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define ORIGINAL_NAMED(name, symbol) ((__typeof__(name)*)dlsym(RTLD_NEXT, symbol))
#define ORIGINAL(name) ORIGINAL_NAMED(name, #name)

/* Whether the path is the file, its backup, or the folder that holds them. */
static int is_meant(const char* path) {
    const char* file = getenv("MORVANE_TEST_FAULT_PATH");
    if (!file || !path)
        return 0;
    const size_t folder = (size_t)(strrchr(file, '/') - file);
    const size_t length = strlen(path);
    return strncmp(path, file, strlen(file)) == 0 ||
           (strncmp(path, file, folder) == 0 && (length == folder || length == folder + 1));
}

static struct {
    int is_read;       /* whether the next three have been read from the environment */
    char function[20]; /* empty for no fault */
    long number;
    char action[16];
    long calls;
    int began; /* whether an operation on the file was seen */
} fault;

static int is_chosen(const char* function) {
    if (!fault.is_read) {
        const char* text = getenv("MORVANE_TEST_FAULT");
        char number[16];
        if (!text || sscanf(text, "%19s %15s %15s", fault.function, number, fault.action) != 3)
            fault.function[0] = 0;
        else
            fault.number = strtol(number, NULL, 10);
        fault.is_read = 1;
    }
    return strcmp(fault.function, function) == 0;
}

/* Whether this call, which is one of those that are counted, fails; sets errno then. */
static int is_its_turn(void) {
    if (++fault.calls != fault.number)
        return 0;
    if (strcmp(fault.action, "kill") == 0)
        raise(SIGKILL);
    errno = (int)strtol(fault.action, NULL, 10);
    return 1;
}

/* Whether this operation on a file fails. */
static int fails(const char* function, const char* path) {
    const int chosen = is_chosen("any") || is_chosen(function);
    if (!is_meant(path))
        return 0;
    fault.began = 1;
    return chosen && is_its_turn();
}

static int descriptor_fails(const char* function, int descriptor) {
    char link[64];
    char path[PATH_MAX] = "";
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const int saved = errno;
    const ssize_t length = readlink(link, path, sizeof path - 1);
    errno = saved;
    return length > 0 && fails(function, path);
}

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails("open", path) ? -1 : ORIGINAL_NAMED(open, NAME_OF_open)(path, flags, mode);
}

int fortified_open(const char* path, int flags);
int fortified_open(const char* path, int flags) {
    return open(path, flags);
}

int stat(const char* path, struct stat* status) {
    return fails("stat", path) ? -1 : ORIGINAL_NAMED(stat, NAME_OF_stat)(path, status);
}

int fchown(int descriptor, uid_t owner, gid_t group) {
    return descriptor_fails("fchown", descriptor) ? -1 : ORIGINAL(fchown)(descriptor, owner, group);
}

int fchmod(int descriptor, mode_t mode) {
    return descriptor_fails("fchmod", descriptor) ? -1 : ORIGINAL(fchmod)(descriptor, mode);
}

int rename(const char* from, const char* to) {
    return fails("rename", from) ? -1 : ORIGINAL(rename)(from, to);
}

int remove(const char* path) {
    return fails("remove", path) ? -1 : ORIGINAL(remove)(path);
}

/* A stream that could not be written to records the error. */
size_t fwrite(const void* data, size_t size, size_t count, FILE* stream) {
    if (!descriptor_fails("fwrite", fileno(stream)))
        return ORIGINAL(fwrite)(data, size, count, stream);
    const int error = errno;
    if (fgetc(stream) != EOF || !ferror(stream)) /* fails on a write-only stream */
        abort();
    errno = error;
    return 0;
}

/* A stream that could not be flushed has lost what was in its buffer. */
int fflush(FILE* stream) {
    if (!stream || !descriptor_fails("fflush", fileno(stream)))
        return ORIGINAL(fflush)(stream);
    const int error = errno;
    if (ftruncate(fileno(stream), 0) != 0)
        abort();
    errno = error;
    return EOF;
}

/* A killed process loses no data for want of a sync, so nothing waits for the disk; a descriptor
 * that is not open is an error as always. */
int fsync(int descriptor) {
    return descriptor_fails("fsync", descriptor) || fcntl(descriptor, F_GETFD) < 0 ? -1 : 0;
}

int fclose(FILE* stream) {
    const int failed = descriptor_fails("fclose", fileno(stream));
    const int error = errno;
    const int result = ORIGINAL(fclose)(stream);
    errno = error;
    return failed ? EOF : result;
}

/* GLib's allocation that may fail. A compiler that knows the size calls the one without a count. */
void* g_try_malloc0(size_t size);
void* g_try_malloc0(size_t size) {
    return is_chosen("g_try_malloc0_n") && is_its_turn() ? NULL : ORIGINAL(g_try_malloc0)(size);
}

void* g_try_malloc0_n(size_t count, size_t size);
void* g_try_malloc0_n(size_t count, size_t size) {
    return is_chosen("g_try_malloc0_n") && is_its_turn() ? NULL
                                                         : ORIGINAL(g_try_malloc0_n)(count, size);
}

#ifndef MORVANE_SANITIZE /* which has an allocator of its own */
void* __libc_malloc(size_t size);
void* malloc(size_t size) {
    if (fault.began && is_chosen("malloc") && is_its_turn())
        return NULL;
    return __libc_malloc(size);
}
#endif
