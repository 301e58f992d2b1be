// What the method handlers of the exported object need and D-Bus does not hand them.
#pragma once

#include "paramhandler/connection.h"

#include <glib.h>

namespace morvane {

class PresetManager;

/// Set once during start-up, in the order of the members; borrowed.
struct ServiceGlobals {
    DBusGProxy* parameterHandler = nullptr;
    PresetManager* manager = nullptr;
    GMainLoop* mainLoop = nullptr;
    GMutex* mutex = nullptr; ///< serialises the method handlers; null again after "die"
};

extern ServiceGlobals service;

} // namespace morvane
