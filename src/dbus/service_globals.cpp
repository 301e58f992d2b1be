#include "dbus/service_globals.h"

namespace morvane {

ServiceGlobals service;

} // namespace morvane
