// The deprecated GLib calls that the daemon makes so that it starts on old devices too. No other
// file may call deprecated functions.
#pragma once

#include <glib.h>

namespace morvane {

/// `g_type_init`; needed before GLib 2.36.
void initialiseTypes();

/// `g_thread_init`, unless the thread system is initialised; needed before GLib 2.32.
void initialiseThreads();

/// Says whether the GLib thread system is initialised.
bool threadsInitialised();

/// `g_mutex_new`. The caller frees the mutex with `freeMutex`.
GMutex* newMutex();
void freeMutex(GMutex* mutex);

} // namespace morvane
