#include "paramhandler/parameter_operations.h"

#include "paramhandler/error_report.h"
#include "paramhandler/string_list.h"
#include "paramhandler/transaction_client.h"
#include "text/utf8.h"

#include <syslog.h>

#include <cassert>
#include <memory>
#include <string_view>

namespace morvane {

namespace {

constexpr const char* setOutOfMemory = "parm_set_() setParm - out of memory\n";
constexpr const char* resetOutOfMemory = "parm_reset_() defParm - out of memory\n";
constexpr const char* getOutOfMemory = "parm_get_() getParm - out of memory\n";

// The Parameter Handler marks its own errors; all others come from the way there.
bool isRefusal(const OwnedError& error) {
    constexpr std::string_view mark = "dbus_norvix_transaction";
    return std::string_view(messageOf(error)).starts_with(mark);
}

// Makes the call until it succeeds or the Parameter Handler refuses it. What failed on its way is
// repeated at once, without limit: the Parameter Handler may be starting again. Only a closed
// connection, over which nothing can arrive any more, ends the process.
template <typename Call>
bool callUntilAnswered(DBusGProxy* proxy, const char* failureText, Call call) {
    for (;;) {
        GError* raw = nullptr;
        call(&raw);
        if (raw == nullptr)
            return true;
        OwnedError error(raw);
        const bool refused = isRefusal(error);
        reportError(failureText, std::move(error), AfterReport::goOn);
        if (refused)
            return false;
        exitIfClosed(proxy);
    }
}

bool set(DBusGProxy* proxy, const guint32* transaction, Target target,
         std::span<const KeyValue> request) {
    if (proxy == nullptr)
        return false;
    if (request.empty())
        return true;
    StringList names(request.size(), setOutOfMemory);
    StringList values(request.size(), setOutOfMemory);
    for (const auto& [name, value] : request) {
        names.add(name);
        values.add(value);
    }
    return callUntilAnswered(proxy, setFailed, [&](GError** error) {
        if (request.size() == 1)
            callSet(proxy, transaction, target, names.front(), values.front(), error);
        else
            callSetBulk(proxy, transaction, target, names.array(), values.array(), error);
    });
}

bool reset(DBusGProxy* proxy, const guint32* transaction, Target target,
           std::span<const BorrowedText> request) {
    if (proxy == nullptr)
        return false;
    if (request.empty())
        return true;
    StringList names(request.size(), resetOutOfMemory);
    for (const auto& name : request)
        names.add(name);
    return callUntilAnswered(proxy, resetFailed, [&](GError** error) {
        if (request.size() == 1)
            callReset(proxy, transaction, target, names.front(), error);
        else
            callResetBulk(proxy, transaction, target, names.array(), error);
    });
}

SharedTexts shared(OwnedTexts texts, std::size_t count) {
    gchar** const array = texts.release();
    return {std::shared_ptr<const void>(array, [array](const void*) { g_strfreev(array); }),
            {array, count}};
}

bool getOne(DBusGProxy* proxy, const guint32* transaction, const StringList& names,
            SharedTexts& values) {
    OwnedTexts reply(g_new0(gchar*, 2));
    const bool answered = callUntilAnswered(proxy, getFailed, [&](GError** error) {
        callGet(proxy, transaction, names.front(), *reply.get(), error);
    });
    if (answered)
        values = shared(std::move(reply), 1);
    return answered;
}

bool getSeveral(DBusGProxy* proxy, const guint32* transaction, guint32 option,
                const StringList& names, SharedTexts& values) {
    OwnedTexts reply;
    const bool answered = callUntilAnswered(proxy, bulkGetFailed, [&](GError** error) {
        gchar** raw = nullptr;
        callGetBulk(proxy, transaction, option, names.array(), raw, error);
        reply.reset(raw);
    });
    if (!answered)
        return false;
    const std::size_t count = g_strv_length(reply.get());
    if (count != names.size()) {
        const auto detail = "the reply has " + std::to_string(count) + " values for " +
                            std::to_string(names.size()) + " names";
        reportError(bulkGetFailed, detail.c_str(), AfterReport::goOn);
        return false;
    }
    values = shared(std::move(reply), count);
    return true;
}

} // namespace

bool parm_start_trans(DBusGProxy* proxy, guint32& transaction) {
    if (proxy == nullptr)
        return false;
    return callUntilAnswered(proxy, "Start transaction failed",
                             [&](GError** error) { callStart(proxy, transaction, error); });
}

bool parm_end_trans(DBusGProxy* proxy, guint32 transaction) {
    if (proxy == nullptr)
        return false;
    return callUntilAnswered(proxy, "End transaction failed",
                             [&](GError** error) { callEnd(proxy, transaction, error); });
}

bool parm_get(DBusGProxy* proxy, const guint32* transaction, guint32 option,
              std::span<const std::string> names, SharedTexts& values) {
    if (proxy == nullptr)
        return false;
    if (names.empty()) {
        values = {};
        return true;
    }
    StringList request(names.size(), getOutOfMemory);
    for (const auto& name : names)
        request.add(name);
    return names.size() == 1 ? getOne(proxy, transaction, request, values)
                             : getSeveral(proxy, transaction, option, request, values);
}

bool parm_set(DBusGProxy* proxy, const guint32* transaction, std::span<const KeyValue> request) {
    return set(proxy, transaction, Target::value, request);
}

bool parm_set_status(DBusGProxy* proxy, const guint32* transaction,
                     std::span<const KeyValue> request) {
    return set(proxy, transaction, Target::status, request);
}

bool parm_reset(DBusGProxy* proxy, const guint32* transaction,
                std::span<const BorrowedText> names) {
    return reset(proxy, transaction, Target::value, names);
}

bool parm_reset_status(DBusGProxy* proxy, const guint32* transaction,
                       std::span<const BorrowedText> names) {
    return reset(proxy, transaction, Target::status, names);
}

bool parm_check_set(DBusGProxy* proxy, const guint32* transaction, const std::string& name,
                    const std::string& value, bool& accepted) {
    constexpr const char* failureText = "parm_check_set_() - set failed";
    if (proxy == nullptr)
        return false;
    assert(isUtf8(name) && isUtf8(value));
    gboolean answer = FALSE;
    const bool answered = callUntilAnswered(proxy, failureText, [&](GError** error) {
        callCheckSet(proxy, transaction, name.c_str(), value.c_str(), answer, error);
    });
    if (answered)
        accepted = answer == TRUE;
    return answered;
}

bool parm_commit(DBusGProxy* proxy, guint32 transaction) {
    if (proxy == nullptr)
        return false;
    beginCommit(proxy, transaction, commitCallback, GUINT_TO_POINTER(transaction));
    return true;
}

bool parm_commit_sync(DBusGProxy* proxy, guint32 transaction) {
    if (proxy == nullptr)
        return false;
    GError* raw = nullptr;
    callCommit(proxy, transaction, &raw);
    const OwnedError error(raw);
    if (error)
        syslog(LOG_ERR, "ERROR: parm_commit_sync() - commit transaction failed (%s)\n",
               messageOf(error));
    const bool ended = parm_end_trans(proxy, transaction);
    return !error && ended;
}

void commitCallback(DBusGProxy* proxy, GError* error, gpointer transaction) {
    const OwnedError owned(error);
    if (owned)
        syslog(LOG_ERR, "ERROR: commitCallback() - commit transaction failed (%s)\n",
               messageOf(owned));
    parm_end_trans(proxy, GPOINTER_TO_UINT(transaction));
}

} // namespace morvane
