#include "core/preset_manager.h"
#include "dbus/server.h"
#include "glib/deprecated_glib.h"
#include "glib/glib_owned.h"
#include "support/log_recorder.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace morvane {
namespace {

using OwnedObject = std::unique_ptr<ValueObject, ReleasedBy<g_object_unref>>;

/// What a handler answered: "true", "false", or the error's message.
std::string outcomeOf(gboolean handled, gboolean success, GError* raw) {
    const OwnedError error(raw);
    if (handled != FALSE) {
        EXPECT_EQ(raw, nullptr);
        return success != FALSE ? "true" : "false";
    }
    EXPECT_EQ(success, FALSE);
    if (!error)
        return "no error";
    EXPECT_STREQ(g_quark_to_string(error->domain), "dbus_norvix_preset");
    EXPECT_EQ(error->code, 0);
    return error->message;
}

class Server : public testing::Test {
protected:
    void SetUp() override { service.manager = &manager_; }
    void TearDown() override { service = {}; }

    template <typename Handler, typename... Arguments>
    std::string call(Handler handler, Arguments... arguments) {
        gboolean success = TRUE;
        GError* error = nullptr;
        const gboolean handled = handler(object_.get(), arguments..., &success, &error);
        return outcomeOf(handled, success, error);
    }

    const test::TempFolder folder_;
    PresetManager manager_{
        folder_.write("parameters",
                      "input index { rangeValid { 1..2 } }\ngain rw { index { input } }\n"),
        folder_.write("presets", "scene preset { }\n"),
        {}};
    const OwnedObject object_{
        static_cast<ValueObject*>(g_object_new(value_object_get_type(), nullptr))};

    std::string scene_ = "scene";
    std::string file_ = folder_.path("p");
    std::string key_ = "gain[1]";
    std::vector<gchar*> keys_{key_.data(), nullptr};
    gchar* const preset = scene_.data();
    gchar* const file = file_.data();
    gchar** const list = keys_.data();
    gchar* const none = nullptr;
    gchar** const noList = nullptr;
};

TEST_F(Server, RegistersItsClassOnce) {
    EXPECT_STREQ(g_type_name(value_object_get_type()), "ValueObject");
    EXPECT_EQ(value_object_get_type(), value_object_get_type());
    EXPECT_EQ(g_type_parent(value_object_get_type()), G_TYPE_OBJECT);
}

TEST_F(Server, RefusesMissingArguments) {
    const std::string load = "dbus_norvix_preset: Invalid parameters passed to load preset";
    EXPECT_EQ(call(value_object_load, none, file), load);
    EXPECT_EQ(call(value_object_load, preset, none), load);
    const std::string withDefaults =
        "dbus_norvix_preset: Invalid parameters passed to load preset with defaults";
    EXPECT_EQ(call(value_object_load_with_default, none, file), withDefaults);
    EXPECT_EQ(call(value_object_load_with_default, preset, none), withDefaults);
    EXPECT_EQ(call(value_object_load_default, none),
              "dbus_norvix_preset: Invalid parameters passed to load defaults");
    const std::string store = "dbus_norvix_preset: Invalid parameters passed to store preset";
    EXPECT_EQ(call(value_object_store, none, file), store);
    EXPECT_EQ(call(value_object_store, preset, none), store);
    const std::string storeSub =
        "dbus_norvix_preset: Invalid parameters passed to store_subpreset()";
    EXPECT_EQ(call(value_object_store_subpreset, noList, preset, file), storeSub);
    EXPECT_EQ(call(value_object_store_subpreset, list, none, file), storeSub);
    EXPECT_EQ(call(value_object_store_subpreset, list, preset, none), storeSub);
    const std::string inPreset = "dbus_norvix_preset: Invalid parameters passed to in_preset";
    EXPECT_EQ(call(value_object_in_preset, none, list), inPreset);
    EXPECT_EQ(call(value_object_in_preset, preset, noList), inPreset);
    EXPECT_EQ(call(value_object_is_preset, none),
              "dbus_norvix_preset: Invalid parameters passed to is_preset");
}

TEST_F(Server, AnswersAFailedRequestWithItsError) {
    EXPECT_EQ(call(value_object_load, preset, file), "dbus_norvix_preset: Load preset failed");
    EXPECT_EQ(call(value_object_load_with_default, preset, file),
              "dbus_norvix_preset: Load preset with defaults failed");
    EXPECT_EQ(call(value_object_load_default, preset), "dbus_norvix_preset: Load defaults failed");
    EXPECT_EQ(call(value_object_store, preset, file), "dbus_norvix_preset: Store preset failed");
    EXPECT_EQ(call(value_object_store_subpreset, list, preset, file),
              "dbus_norvix_preset: Store sub-preset failed");
    EXPECT_EQ(test::takeLog(), std::vector<test::LogRecord>{})
        << "without a connection nothing is logged";
}

TEST_F(Server, UnlocksTheMutexWhateverItAnswers) {
    service.mutex = newMutex();
    const auto isFree = [] {
        const bool locked = g_mutex_trylock(service.mutex) != FALSE;
        if (locked)
            g_mutex_unlock(service.mutex);
        return locked;
    };
    const auto answers = [&](const char* why, auto... calls) {
        for (const auto& answer : {calls...}) {
            EXPECT_NE(answer(), "") << why;
            ASSERT_TRUE(isFree()) << why;
        }
    };
    using Answer = std::function<std::string()>;
    answers("missing arguments", Answer([&] { return call(value_object_load, none, file); }),
            Answer([&] { return call(value_object_load_with_default, none, file); }),
            Answer([&] { return call(value_object_load_default, none); }),
            Answer([&] { return call(value_object_store, none, file); }),
            Answer([&] { return call(value_object_store_subpreset, noList, preset, file); }),
            Answer([&] { return call(value_object_in_preset, none, list); }),
            Answer([&] { return call(value_object_is_preset, none); }));
    answers("failures", Answer([&] { return call(value_object_load, preset, file); }),
            Answer([&] { return call(value_object_load_with_default, preset, file); }),
            Answer([&] { return call(value_object_load_default, preset); }),
            Answer([&] { return call(value_object_store, preset, file); }),
            Answer([&] { return call(value_object_store_subpreset, list, preset, file); }));
    answers("answers", Answer([&] { return call(value_object_in_preset, preset, list); }),
            Answer([&] { return call(value_object_is_preset, file); }));
    freeMutex(service.mutex);
}

TEST_F(Server, FindsAnyOfTheKeysInThePreset) {
    std::string foreign = "gain[3]";
    std::vector<gchar*> two{foreign.data(), key_.data(), nullptr};
    std::vector<gchar*> one{foreign.data(), nullptr};
    std::vector<gchar*> empty{nullptr};
    EXPECT_EQ(call(value_object_in_preset, preset, two.data()), "true");
    EXPECT_EQ(call(value_object_in_preset, preset, one.data()), "false");
    EXPECT_EQ(call(value_object_in_preset, preset, empty.data()), "false");
    EXPECT_EQ(call(value_object_in_preset, file, two.data()), "false");
}

TEST_F(Server, KnowsItsPresets) {
    EXPECT_EQ(call(value_object_is_preset, preset), "true");
    EXPECT_EQ(call(value_object_is_preset, file), "false");
}

TEST_F(Server, DiesByEndingTheMainLoopAndNeedsNoMutexFromThenOn) {
    service.mainLoop = g_main_loop_new(nullptr, FALSE);
    service.mutex = newMutex();
    const GSourceFunc die = [](gpointer object) -> gboolean {
        GError* error = nullptr;
        EXPECT_EQ(value_object_die(static_cast<ValueObject*>(object), &error), TRUE);
        EXPECT_EQ(error, nullptr);
        return G_SOURCE_REMOVE;
    };
    g_idle_add(die, object_.get());
    g_main_loop_run(service.mainLoop); // returns because of the call
    EXPECT_EQ(service.mutex, nullptr);
    EXPECT_EQ(call(value_object_is_preset, preset), "true");
    g_main_loop_unref(service.mainLoop);
}

TEST_F(Server, DiesWithoutALoopOrAMutex) {
    GError* error = nullptr;
    EXPECT_EQ(value_object_die(object_.get(), &error), TRUE);
}

TEST_F(Server, LeavesTheMutexUnlocked) {
    service.mutex = newMutex();
    call(value_object_is_preset, preset);
    call(value_object_is_preset, none);
    call(value_object_store, preset, none);
    EXPECT_EQ(g_mutex_trylock(service.mutex), TRUE);
    g_mutex_unlock(service.mutex);
    freeMutex(service.mutex);
}

TEST_F(Server, AbortsWithoutAnObject) {
    gboolean success = FALSE;
    GError* error = nullptr;
    EXPECT_DEATH(value_object_is_preset(nullptr, preset, &success, &error), "obj != NULL");
    EXPECT_DEATH(value_object_die(nullptr, &error), "obj != NULL");
}

} // namespace
} // namespace morvane
