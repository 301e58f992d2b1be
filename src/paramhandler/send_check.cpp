#include "paramhandler/send_check.h"

#include "paramhandler/error_log.h"
#include "text/utf8.h"

#include <dbus/dbus.h>

#include <string>

namespace morvane {

namespace {

// What a message may need besides its strings: the header, with a sender that the bus adds, and the
// arguments of fixed size.
constexpr std::size_t messageOverhead = 4096;

static_assert(ArraySize::maximum == DBUS_MAXIMUM_ARRAY_LENGTH);

/// Checks one call after the other, and logs only the first problem.
class Check {
public:
    explicit Check(const RequestTexts& texts)
        : origin_(texts.origin),
          keysAreUtf8_(texts.keysAreUtf8) {}

    bool passed() const { return passed_; }

    void get(std::span<const CStringView> keys) {
        check(keys.size() == 1 ? getFailed : bulkGetFailed, keys);
    }

    void set(std::span<const KeyValue> request) {
        ArraySize keys;
        ArraySize values;
        for (const auto& [key, value] : request) {
            if (!keysAreUtf8_)
                requireUtf8(setFailed, "key", key.view(), key.view());
            requireUtf8(setFailed, "value", value.view(), key.view());
            keys.add(key.view());
            values.add(value.view());
        }
        requireRoom(setFailed, keys, values);
    }

    void reset(std::span<const CStringView> keys) { check(resetFailed, keys); }

private:
    void check(const char* failureText, std::span<const CStringView> keys) {
        ArraySize size;
        for (const auto& key : keys) {
            if (!keysAreUtf8_)
                requireUtf8(failureText, "key", key.view(), key.view());
            size.add(key.view());
        }
        requireRoom(failureText, size, {});
    }

    void requireUtf8(const char* failureText, const char* what, std::string_view text,
                     std::string_view key) {
        if (!isUtf8(text))
            fail(failureText,
                 std::string(what) + " of " + printableText(key) + " is not valid UTF-8");
    }

    void requireRoom(const char* failureText, const ArraySize& first, const ArraySize& second) {
        for (const auto& array : {first, second}) {
            if (!array.fits())
                failForSize(failureText, array.bytes());
        }
        const auto message = messageOverhead + first.bytes() + second.bytes();
        if (message > DBUS_MAXIMUM_MESSAGE_LENGTH)
            failForSize(failureText, message);
    }

    void failForSize(const char* failureText, std::size_t bytes) {
        fail(failureText, std::to_string(bytes) + " bytes are more than a message holds");
    }

    void fail(const char* failureText, const std::string& reason) {
        if (passed_)
            logError(failureText, (std::string(origin_) + ": " + reason).c_str());
        passed_ = false;
    }

    std::string_view origin_;
    bool keysAreUtf8_;
    bool passed_ = true;
};

} // namespace

bool isSendable(const RequestTexts& texts) {
    Check check(texts);
    check.get(texts.get);
    check.set(texts.set);
    check.set(texts.setStatus);
    check.reset(texts.reset);
    check.reset(texts.resetStatus);
    return check.passed();
}

} // namespace morvane
