#include "dbus/parameter_binding.h"

#include "paramhandler/parameter_operations.h"

namespace morvane {

ParameterOperations bindOperations(DBusGProxy* proxy) {
    return {
        .parm_start_trans =
            [proxy](Transaction& started) { return parm_start_trans(proxy, started); },
        .parm_end_trans =
            [proxy](Transaction transaction) { return parm_end_trans(proxy, transaction); },
        .parm_get =
            [proxy](Transaction transaction, const KeySet& keys, std::vector<std::string>& values) {
                return parm_get(proxy, &transaction, bulkGetOption, keys.keys(), values);
            },
    };
}

} // namespace morvane
