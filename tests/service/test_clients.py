"""Clients that ask too much, too often or for nonsense, or leave before the answer: every call that
wants a reply gets one, in order, and the service goes on."""

import itertools

import pytest
from harness import RemoteError, wait_until
from jeepney import DBusAddress
from raw_client import RawClient
from test_methods import ERROR_NAME

MEBIBYTE = "x" * 2**20
UNKNOWN_METHOD = "org.freedesktop.DBus.Error.UnknownMethod"


def mixed_requests(path):
    """An endless series of requests with their answers: a result, or the name of an error."""
    questions = [
        (("is_preset", "scene"), True),
        (("in_preset", "scene", ["unknown", "mode"]), True),
        (("is_preset", "unknown"), False),
        (("no_such_method", "scene"), UNKNOWN_METHOD),
        (("in_preset", "scene", ["unknown"]), False),
        (("is_preset", ["scene"]), UNKNOWN_METHOD),
        (("store", "unknown", str(path)), ERROR_NAME),
        (("load", "scene", "/nowhere/p"), ERROR_NAME),
    ]
    return itertools.cycle([
        *questions * 3,
        (("store_subpreset", ["mode"], "scene", str(path)), True),
        (("load_with_default", "scene", str(path)), True),
        (("store", "scene", str(path)), True),
        (("load", "scene", str(path)), True),
        (("load_default", "single"), True),
    ])


@pytest.mark.parametrize("method, arguments, answer", [
    ("is_preset", [MEBIBYTE], False),
    ("in_preset", [MEBIBYTE, ["mode"]], False),
    ("in_preset", ["scene", [MEBIBYTE, "mode"]], True),
    ("store", ["scene", "/" + MEBIBYTE], "dbus_norvix_preset: Store preset failed"),
    ("store", [MEBIBYTE, "/p"], "dbus_norvix_preset: Store preset failed"),
    ("load", ["scene", "/" + MEBIBYTE], "dbus_norvix_preset: Load preset failed"),
    ("load_default", [MEBIBYTE], "dbus_norvix_preset: Load defaults failed"),
    ("store_subpreset", [[MEBIBYTE], MEBIBYTE, MEBIBYTE],
     "dbus_norvix_preset: Store sub-preset failed"),
])
def test_a_string_of_a_mebibyte_is_a_string(served, method, arguments, answer):
    expected = RemoteError(ERROR_NAME, answer) if isinstance(answer, str) else answer
    assert served.user.preset(method, *arguments) == expected
    assert served.user.preset("is_preset", "scene") is True


def test_a_list_of_100000_names(served):
    names = [f"unknown[{n}]" for n in range(100_000)]
    assert served.user.preset("in_preset", "scene", names) is False
    assert served.user.preset("in_preset", "scene", [*names, "mode"]) is True
    names.append("mode")
    assert served.user.preset("store_subpreset", names, "scene", str(served.file)) is True
    assert served.file.read_text() == "mode=auto\n"


def test_fifty_clients_with_a_thousand_requests_each(served):
    """Each has a hundred on their way before the first one listens; more would only measure the
    bus, which looks for a reply's call among all of them."""
    clients = [RawClient(served.bus.address) for _ in range(50)]
    requests = [mixed_requests(served.folder / f"p{n}") for n in range(len(clients))]
    for _ in range(10):
        sent = [[] for _ in clients]
        for _ in range(100):
            for client, calls, request in zip(clients, sent, requests):
                call, answer = next(request)
                calls.append((client.send(*call), answer))
        for client, calls in zip(clients, sent):
            assert [client.receive() for _ in calls] == calls
    for client in clients:
        # A surplus reply would come before this answer.
        assert client.call("is_preset", "scene") is True
        client.close()
    assert served.user.preset("die") == ()
    assert served.morvane.wait() == 1, "a sanitizer that finds a leak ends it with another status"


def test_clients_that_leave_before_the_answer(served):
    for number in range(100):
        client = RawClient(served.bus.address)
        for method in ("store", "load", "load_with_default"):
            client.send(method, "scene", str(served.file))
        client.send("in_preset", "scene", ["mode"] * number)
        client.close()
    assert served.user.preset("is_preset", "scene") is True
    assert served.file.read_text() == "gain[1]=0\ngain[2]=0\ngain[3]=0\nmode=auto\ntemperature=40\n"
    assert not served.folder.joinpath("p_bak").exists()
    wait_until(lambda: served.handler.methods().count("start")
               == served.handler.methods().count("end"), "the end of every transaction")


def test_a_client_that_leaves_while_the_parameter_handler_is_slow(world):
    handler = world.simulator(faults="get_bulk 1 delay 300\n")
    world.daemon()
    path = world.folder / "p"
    leaving = RawClient(world.bus.address)
    leaving.send("store", "scene", str(path))
    wait_until(lambda: "get_bulk" in handler.methods(), "the store")
    leaving.close()
    assert world.client().preset("is_preset", "scene") is True
    assert path.read_text().startswith("gain[1]=0\n"), "the store went on"


def test_introspection_under_load(served):
    object_paths = {"/": '<node name="preset"/>', "/preset": '<method name="store_subpreset">'}
    working, looking = RawClient(served.bus.address), RawClient(served.bus.address)
    requests = mixed_requests(served.file)
    for _ in range(50):
        calls = []
        for _ in range(10):
            call, answer = next(requests)
            calls.append((working.send(*call), answer))
        for path, content in object_paths.items():
            assert content in looking.call("Introspect", address=DBusAddress(
                path, "org.norvix.preset", "org.freedesktop.DBus.Introspectable"))
        assert [working.receive() for _ in calls] == calls
    working.close()
    looking.close()
