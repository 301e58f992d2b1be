// Binds the operations that the engine asks for to the D-Bus client of the Parameter Handler.
#pragma once

#include "engine/parameter_operations.h"
#include "paramhandler/connection.h"

namespace morvane {

/// @param proxy of the Parameter Handler; borrowed, must outlive the operations.
ParameterOperations bindOperations(DBusGProxy* proxy);

} // namespace morvane
