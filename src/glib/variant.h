// Owning GVariants, and converting them to and from C++ types.
#pragma once

#include "glib/glib_owned.h"

#include <memory>
#include <string>
#include <vector>

namespace morvane {

using OwnedVariant = std::unique_ptr<GVariant, ReleasedBy<g_variant_unref>>;

/// A floating array of strings.
GVariant* stringArray(const std::vector<std::string>& texts);

/// The strings of an array of strings.
/// @param array borrowed.
std::vector<std::string> stringsOf(GVariant* array);

} // namespace morvane
