#include "parameter_values.h"

#include "glib/variant.h"
#include "paramhandler/error_log.h"
#include "text/utf8.h"

namespace morvane::ctl {

LiveValues readLiveValues(const BusClient& bus, const std::vector<std::string>& keys) {
    constexpr guint32 noOption = 0;
    const auto answer = bus.call(parameterHandler, "single_get_bulk",
                                 g_variant_new("(u@as)", noOption, stringArray(keys)));
    if (!answer.values)
        return {{}, answer.error};
    if (g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(as)")) == FALSE)
        return {{}, "the Parameter Handler answered something else than texts"};
    const OwnedVariant list(g_variant_get_child_value(answer.values.get(), 0));
    auto texts = stringsOf(list.get());
    if (texts.size() != keys.size())
        return {{}, "the Parameter Handler answered another number of values"};
    return {std::move(texts), {}};
}

std::string findRefused(const std::vector<std::string>& keys, const std::string& error,
                        const std::function<std::string(std::size_t)>& callAlone,
                        const std::function<void(std::size_t, const std::string&)>& use) {
    if (!isRefusal(error))
        return error;
    bool found = false;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        auto alone = keys.size() == 1 ? error : callAlone(i);
        if (alone.empty())
            continue;
        if (!isRefusal(alone))
            return alone;
        use(i, alone);
        found = true;
    }
    return found ? std::string() : error;
}

std::string valueLine(std::string_view key, std::string_view value) {
    return printableText(key) + '=' + printableText(value);
}

Json valueObject(std::string_view key, std::string_view value) {
    return {{"key", key}, {"value", value}};
}

} // namespace morvane::ctl
