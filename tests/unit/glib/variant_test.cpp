#include "glib/variant.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(Variant, HoldsTheStringsOfAnArray) {
    using Strings = std::vector<std::string>;
    for (const auto& strings : {Strings{}, Strings{""}, Strings{"a", "", "grün"}}) {
        const OwnedVariant array(g_variant_ref_sink(stringArray(strings)));
        EXPECT_STREQ(g_variant_get_type_string(array.get()), "as");
        EXPECT_EQ(stringsOf(array.get()), strings);
    }
}

} // namespace
} // namespace morvane
