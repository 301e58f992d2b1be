"""The exported object: its methods, their answers and their errors."""

import xml.etree.ElementTree as ET

import pytest
from gi.repository import Gio
from harness import SOURCE, RemoteError

ERROR_NAME = "org.freedesktop.DBus.GLib.UnmappedError.DbusNorvixPreset.Code0"

# Name, in-arguments, out-arguments: what clients rely on.
METHODS = [
    ("load", [("preset_name", "s"), ("file_name", "s")], [("success", "b")]),
    ("load_with_default", [("preset_name", "s"), ("file_name", "s")], [("success", "b")]),
    ("load_default", [("preset_name", "s")], [("success", "b")]),
    ("store", [("preset_name", "s"), ("file_name", "s")], [("success", "b")]),
    ("store_subpreset", [("preset_list", "as"), ("preset_name", "s"), ("file_name", "s")],
     [("success", "b")]),
    ("in_preset", [("preset_name", "s"), ("parm_list", "as")], [("success", "b")]),
    ("is_preset", [("preset_name", "s")], [("success", "b")]),
    ("die", [], []),
]


def methods_of(introspection):
    interfaces = {i.get("name"): i for i in ET.fromstring(introspection).iter("interface")}
    return [
        (method.get("name"),
         [(a.get("name"), a.get("type")) for a in method if a.get("direction") == "in"],
         [(a.get("name"), a.get("type")) for a in method if a.get("direction") == "out"])
        for method in interfaces["org.norvix.preset"].iter("method")]


def test_introspection_shows_the_methods(world):
    world.daemon()
    introspection = world.client().call(
        "org.norvix.preset", "/preset", "org.freedesktop.DBus.Introspectable", "Introspect")
    assert sorted(methods_of(introspection)) == sorted(METHODS)


def test_the_interface_file_shows_the_same_in_the_order_of_the_method_table():
    assert methods_of((SOURCE / "src/dbus/org.norvix.preset.xml").read_text()) == METHODS


@pytest.mark.parametrize("preset, answer", [
    ("scene", True),
    ("single", True),
    ("nothing", False),  # covers no key
    ("unknown", False),
    ("", False),
    ("Scene", False),
])
def test_is_preset(world, preset, answer):
    world.daemon()
    assert world.client().preset("is_preset", preset) is answer


@pytest.mark.parametrize("preset, keys, answer", [
    ("scene", ["gain[1]"], True),
    ("scene", ["temperature"], True),
    ("scene", ["unknown", "gain[9]", "mode"], True),  # any of them
    ("scene", ["unknown", "gain", "gain[9]", "trigger", "serial"], False),
    ("scene", [" mode", "mode ", "MODE"], False),
    ("scene", [], False),
    ("unknown", ["mode"], False),
    ("nothing", ["mode"], False),
])
def test_in_preset(world, preset, keys, answer):
    world.daemon()
    assert world.client().preset("in_preset", preset, keys) is answer


@pytest.mark.parametrize("method, arguments, message", [
    ("load", ["scene", "/nowhere/p"], "dbus_norvix_preset: Load preset failed"),
    ("load_with_default", ["scene", "/nowhere/p"],
     "dbus_norvix_preset: Load preset with defaults failed"),
    ("load_default", ["unknown"], "dbus_norvix_preset: Load defaults failed"),
    ("store", ["unknown", "/nowhere/p"], "dbus_norvix_preset: Store preset failed"),
    ("store_subpreset", [["mode"], "unknown", "/nowhere/p"],
     "dbus_norvix_preset: Store sub-preset failed"),
    ("load", ["", ""], "dbus_norvix_preset: Load preset failed"),
    ("store", ["", ""], "dbus_norvix_preset: Store preset failed"),
])
def test_a_failed_request_is_an_error_reply(world, method, arguments, message):
    world.daemon()
    assert world.client().preset(method, *arguments) == RemoteError(ERROR_NAME, message)


def test_the_service_goes_on_after_wrong_calls(world):
    world.daemon()
    client = world.client()
    service = ("org.norvix.preset", "/preset", "org.norvix.preset")
    for call in [
        (*service, "no_such_method"),
        (*service, "store", "(s)", "scene"),
        (*service, "store", "(sss)", "scene", "p", "p"),
        (*service, "in_preset", "(ss)", "scene", "mode"),
        (*service, "die", "(s)", "now"),
        ("org.norvix.preset", "/preset", "org.norvix.unknown", "store", "(ss)", "scene", "p"),
        ("org.norvix.preset", "/elsewhere", "org.norvix.preset", "is_preset", "(s)", "scene"),
    ]:
        answer = client.call(*call)
        assert isinstance(answer, RemoteError), call
        assert answer.name.startswith("org.freedesktop.DBus.Error."), call
    assert client.preset("is_preset", "scene") is True


def test_every_call_is_answered(world):
    world.daemon()
    client = world.client()
    answers = [client.start_preset("is_preset", "scene" if n % 3 == 0 else "unknown")
               for n in range(100)]
    assert [answer() for answer in answers] == [n % 3 == 0 for n in range(100)]


def test_a_call_that_wants_no_reply_is_carried_out(world):
    daemon = world.daemon()
    connection = world.client().connection
    message = Gio.DBusMessage.new_method_call(
        "org.norvix.preset", "/preset", "org.norvix.preset", "die")
    message.set_flags(Gio.DBusMessageFlags.NO_REPLY_EXPECTED)
    connection.send_message(message, Gio.DBusSendMessageFlags.NONE)
    connection.flush_sync(None)
    assert daemon.wait() == 1
