#include "glib/variant.h"

namespace morvane {

GVariant* stringArray(const std::vector<std::string>& texts) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const auto& text : texts)
        g_variant_builder_add(&builder, "s", text.c_str());
    return g_variant_builder_end(&builder);
}

std::vector<std::string> stringsOf(GVariant* array) {
    gsize size = 0;
    const std::unique_ptr<const gchar*, ReleasedBy<g_free>> texts(g_variant_get_strv(array, &size));
    return {texts.get(), texts.get() + size};
}

} // namespace morvane
