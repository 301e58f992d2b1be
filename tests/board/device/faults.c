/* Faults of the daemon that the tests of power cuts must find, as a library to preload.
 *
 * MORVANE_BOARD_FAULT=no-sync: nothing is synced.
 * MORVANE_BOARD_FAULT=exchanged: a file is synced only after its backup was removed for good. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define ORIGINAL(name) ((__typeof__(name)*)dlsym(RTLD_NEXT, #name))

static int postponed = -1; /* the file that is synced later */
static int has_removed;    /* whether the backup was removed since */

static int has_fault(const char* name) {
    const char* fault = getenv("MORVANE_BOARD_FAULT");
    return fault != NULL && strcmp(fault, name) == 0;
}

static int is_regular_file(int file) {
    struct stat status;
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

static void sync_postponed(void) {
    ORIGINAL(fsync)(postponed);
    close(postponed);
    postponed = -1;
}

int fsync(int file) {
    if (has_fault("no-sync"))
        return 0;
    if (has_fault("exchanged") && is_regular_file(file)) {
        postponed = dup(file);
        has_removed = 0;
        return 0;
    }
    const int result = ORIGINAL(fsync)(file); /* of the folder */
    if (postponed >= 0 && has_removed)
        sync_postponed();
    return result;
}

int remove(const char* path) {
    has_removed = 1;
    return ORIGINAL(remove)(path);
}
