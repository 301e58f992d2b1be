// The rule by which every Parameter Handler operation of a request is retried.
#pragma once

#include "engine/parameter_operations.h"

#include <functional>

namespace morvane {

/// Calls `operation` until it succeeds, at most 10 times and one second apart. Logs every failure
/// and, after the tenth, that the Parameter Handler is lost.
///
/// The pauses block the whole service: requests are served strictly one after another.
///
/// @param name of the operation, for the log.
/// @return whether the operation succeeded.
bool withRetries(const char* name, const std::function<bool()>& operation);

/// Starts a transaction by that rule: the first step of every request.
bool startTransaction(const ParameterOperations& operations, Transaction& transaction);

} // namespace morvane
