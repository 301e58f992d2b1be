// Here and nowhere else.
#define GLIB_DISABLE_DEPRECATION_WARNINGS

#include "glib/deprecated_glib.h"

#include <glib-object.h>

namespace morvane {

void initialiseTypes() {
    g_type_init();
}

void initialiseThreads() {
    if (!threadsInitialised())
        g_thread_init(nullptr);
}

bool threadsInitialised() {
    return g_thread_supported();
}

GMutex* newMutex() {
    return g_mutex_new();
}

void freeMutex(GMutex* mutex) {
    g_mutex_free(mutex);
}

} // namespace morvane
