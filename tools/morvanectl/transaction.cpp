#include "transaction.h"

#include "glib/variant.h"

#include <chrono>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

// For an answer after a signal: a Parameter Handler that works needs less.
constexpr std::chrono::seconds lastTimeLimit{5};

std::string unexpected(const char* method, const OwnedVariant& values) {
    return std::string("the Parameter Handler answered ") + method + " with values of type " +
           g_variant_get_type_string(values.get());
}

} // namespace

Transaction::Transaction(const BusClient& bus, std::string& error)
    : bus_(bus),
      interruption_([this] {
          if (pending_ != nullptr)
              pending_->hurry(lastTimeLimit);
      }) {
    const auto answer = ask("start", nullptr);
    if (!answer.values) {
        error = answer.error;
    } else if (g_variant_is_of_type(answer.values.get(), G_VARIANT_TYPE("(u)")) == FALSE) {
        error = unexpected("start", answer.values);
    } else {
        guint32 id = 0;
        g_variant_get(answer.values.get(), "(u)", &id);
        id_ = id;
    }
}

Transaction::~Transaction() {
    if (id_)
        end();
}

std::string Transaction::set(Target target, std::span<const Assignment> assignments) {
    const bool ofStatus = target == Target::status;
    if (assignments.size() == 1)
        return call(ofStatus ? "set_status" : "set",
                    g_variant_new("(uss)", *id_, assignments.front().key.c_str(),
                                  assignments.front().value.c_str()));
    std::vector<std::string> keys;
    std::vector<std::string> values;
    for (const auto& [key, value] : assignments) {
        keys.push_back(key);
        values.push_back(value);
    }
    return call(ofStatus ? "set_status_bulk" : "set_bulk",
                g_variant_new("(u@as@as)", *id_, stringArray(keys), stringArray(values)));
}

std::string Transaction::commit() {
    return call("commit", g_variant_new("(u)", *id_));
}

std::string Transaction::end() {
    const auto id = *std::exchange(id_, std::nullopt);
    return call("end", g_variant_new("(u)", id));
}

Answer Transaction::ask(const char* method, GVariant* arguments) {
    auto wait = bus_.waitFor(parameterHandler, method);
    if (interruption_.hasCome())
        wait.hurry(lastTimeLimit);
    pending_ = &wait;
    auto answer = bus_.call(parameterHandler, method, arguments, wait);
    pending_ = nullptr;
    return answer;
}

std::string Transaction::call(const char* method, GVariant* arguments) {
    const auto answer = ask(method, arguments);
    if (!answer.values)
        return answer.error;
    return g_variant_n_children(answer.values.get()) == 0 ? std::string()
                                                          : unexpected(method, answer.values);
}

} // namespace morvane::ctl
