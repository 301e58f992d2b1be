#include "paramhandler/parameter_calls.h"

#include "paramhandler/error_log.h"
#include "paramhandler/string_list.h"
#include "paramhandler/transaction_client.h"
#include "text/utf8.h"

#include <syslog.h>

#include <cassert>
#include <memory>

namespace morvane {

namespace {

constexpr const char* setOutOfMemory = "parm_set_() setParm - out of memory\n";
constexpr const char* resetOutOfMemory = "parm_reset_() defParm - out of memory\n";
constexpr const char* getOutOfMemory = "parm_get_() getParm - out of memory\n";

// Makes the call until it succeeds or the Parameter Handler refuses it. After a transport error it
// is repeated at once, without limit: the Parameter Handler may be restarting. Only a closed
// connection, over which nothing can arrive any more, ends the process.
template <typename Call>
bool callUntilAnswered(const Connection& connection, const char* failureText, Call call) {
    for (;;) {
        GError* raw = nullptr;
        call(&raw);
        if (raw == nullptr)
            return true;
        const OwnedError error(raw);
        logError(failureText, messageOf(error));
        if (isRefusal(messageOf(error)))
            return false;
        exitIfClosed(connection);
    }
}

bool set(const Connection& connection, const guint32* transaction, Target target,
         std::span<const KeyValue> request) {
    if (connection.proxy == nullptr)
        return false;
    if (request.empty())
        return true;
    StringList names(request.size(), setOutOfMemory);
    StringList values(request.size(), setOutOfMemory);
    for (const auto& [name, value] : request) {
        names.add(name);
        values.add(value);
    }
    return callUntilAnswered(connection, setFailed, [&](GError** error) {
        if (request.size() == 1)
            callSet(connection.proxy, transaction, target, names.front(), values.front(), error);
        else
            callSetBulk(connection.proxy, transaction, target, names.array(), values.array(),
                        error);
    });
}

bool reset(const Connection& connection, const guint32* transaction, Target target,
           std::span<const CStringView> request) {
    if (connection.proxy == nullptr)
        return false;
    if (request.empty())
        return true;
    StringList names(request.size(), resetOutOfMemory);
    for (const auto& name : request)
        names.add(name);
    return callUntilAnswered(connection, resetFailed, [&](GError** error) {
        if (request.size() == 1)
            callReset(connection.proxy, transaction, target, names.front(), error);
        else
            callResetBulk(connection.proxy, transaction, target, names.array(), error);
    });
}

ReceivedStrings received(OwnedTexts texts, std::size_t count) {
    gchar** const array = texts.release();
    return {{array, [](void* owner) { g_strfreev(static_cast<gchar**>(owner)); }}, {array, count}};
}

bool getOne(const Connection& connection, const guint32* transaction, const StringList& names,
            ReceivedStrings& values) {
    OwnedTexts reply(g_new0(gchar*, 2));
    const bool answered = callUntilAnswered(connection, getFailed, [&](GError** error) {
        callGet(connection.proxy, transaction, names.front(), *reply.get(), error);
    });
    if (answered)
        values = received(std::move(reply), 1);
    return answered;
}

bool getSeveral(const Connection& connection, const guint32* transaction, guint32 option,
                const StringList& names, ReceivedStrings& values) {
    OwnedTexts reply;
    const bool answered = callUntilAnswered(connection, bulkGetFailed, [&](GError** error) {
        gchar** raw = nullptr;
        callGetBulk(connection.proxy, transaction, option, names.array(), raw, error);
        reply.reset(raw);
    });
    if (!answered)
        return false;
    const std::size_t count = g_strv_length(reply.get());
    if (count != names.size()) {
        const auto detail = "the reply has " + std::to_string(count) + " values for " +
                            std::to_string(names.size()) + " names";
        logError(bulkGetFailed, detail.c_str());
        return false;
    }
    values = received(std::move(reply), count);
    return true;
}

} // namespace

bool parm_start_trans(const Connection& connection, guint32& transaction) {
    if (connection.proxy == nullptr)
        return false;
    return callUntilAnswered(connection, "Start transaction failed", [&](GError** error) {
        callStart(connection.proxy, transaction, error);
    });
}

bool parm_end_trans(const Connection& connection, guint32 transaction) {
    if (connection.proxy == nullptr)
        return false;
    return callUntilAnswered(connection, "End transaction failed", [&](GError** error) {
        callEnd(connection.proxy, transaction, error);
    });
}

bool parm_get(const Connection& connection, const guint32* transaction, guint32 option,
              std::span<const CStringView> names, ReceivedStrings& values) {
    if (connection.proxy == nullptr)
        return false;
    if (names.empty()) {
        values = {};
        return true;
    }
    StringList request(names.size(), getOutOfMemory);
    for (const auto& name : names)
        request.add(name);
    return names.size() == 1 ? getOne(connection, transaction, request, values)
                             : getSeveral(connection, transaction, option, request, values);
}

bool parm_set(const Connection& connection, const guint32* transaction,
              std::span<const KeyValue> request) {
    return set(connection, transaction, Target::value, request);
}

bool parm_set_status(const Connection& connection, const guint32* transaction,
                     std::span<const KeyValue> request) {
    return set(connection, transaction, Target::status, request);
}

bool parm_reset(const Connection& connection, const guint32* transaction,
                std::span<const CStringView> names) {
    return reset(connection, transaction, Target::value, names);
}

bool parm_reset_status(const Connection& connection, const guint32* transaction,
                       std::span<const CStringView> names) {
    return reset(connection, transaction, Target::status, names);
}

bool parm_check_set(const Connection& connection, const guint32* transaction,
                    const std::string& name, const std::string& value, bool& accepted) {
    constexpr const char* failureText = "parm_check_set_() - set failed";
    if (connection.proxy == nullptr)
        return false;
    assert(isUtf8(name) && isUtf8(value));
    gboolean answer = FALSE;
    const bool answered = callUntilAnswered(connection, failureText, [&](GError** error) {
        callCheckSet(connection.proxy, transaction, name.c_str(), value.c_str(), answer, error);
    });
    if (answered)
        accepted = answer == TRUE;
    return answered;
}

bool parm_commit(const Connection& connection, guint32 transaction) {
    if (connection.proxy == nullptr)
        return false;
    beginCommit(connection.proxy, transaction, [connection, transaction](GError* error) {
        commitCallback(connection, error, transaction);
    });
    return true;
}

bool parm_commit_sync(const Connection& connection, guint32 transaction) {
    if (connection.proxy == nullptr)
        return false;
    GError* raw = nullptr;
    callCommit(connection.proxy, transaction, &raw);
    const OwnedError error(raw);
    if (error)
        syslog(LOG_ERR, "ERROR: parm_commit_sync() - commit transaction failed (%s)\n",
               messageOf(error));
    const bool ended = parm_end_trans(connection, transaction);
    return !error && ended;
}

void commitCallback(const Connection& connection, GError* error, guint32 transaction) {
    const OwnedError owned(error);
    if (owned)
        syslog(LOG_ERR, "ERROR: commitCallback() - commit transaction failed (%s)\n",
               messageOf(owned));
    parm_end_trans(connection, transaction);
}

} // namespace morvane
