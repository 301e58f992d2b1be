#include "dbus/parameter_binding.h"

#include "paramhandler/parameter_operations.h"
#include "paramhandler/send_check.h"

namespace morvane {

ParameterOperations bindOperations(DBusGProxy* proxy) {
    return {
        .isSendable = isSendable,
        .parm_start_trans =
            [proxy](Transaction& started) { return parm_start_trans(proxy, started); },
        .parm_end_trans =
            [proxy](Transaction transaction) { return parm_end_trans(proxy, transaction); },
        .parm_get =
            [proxy](Transaction transaction, const KeySet& keys, SharedTexts& values) {
                return parm_get(proxy, &transaction, bulkGetOption, keys.keys(), values);
            },
        .parm_set =
            [proxy](Transaction transaction, std::span<const KeyValue> values) {
                return parm_set(proxy, &transaction, values);
            },
        .parm_set_status =
            [proxy](Transaction transaction, std::span<const KeyValue> values) {
                return parm_set_status(proxy, &transaction, values);
            },
        .parm_reset =
            [proxy](Transaction transaction, std::span<const BorrowedText> keys) {
                return parm_reset(proxy, &transaction, keys);
            },
        .parm_reset_status =
            [proxy](Transaction transaction, std::span<const BorrowedText> keys) {
                return parm_reset_status(proxy, &transaction, keys);
            },
        .parm_commit = [proxy](Transaction transaction) { return parm_commit(proxy, transaction); },
    };
}

} // namespace morvane
