"""The policy of the example with its own bus: who may offer, call and announce what.

Switching users needs root. So on the bus of each test the user who runs the tests is one of those
that the policy names, and unrelated users of the machine stand in for the others.
"""

import os
from dataclasses import dataclass

import pytest
from conftest import World
from gi.repository import GLib
from harness import SOURCE, Bus, RemoteError
from raw_client import RawClient

EXAMPLE = SOURCE / "packaging/own-bus"
PRESET, HANDLER = "org.norvix.preset", "org.norvix.transaction"
# Whom the policy names, and who stands in for each of them while it is not tested.
NAMED = {
    'user="morvane"': 'user="daemon"',
    'user="parameter-handler"': 'user="bin"',
    'group="presets"': 'group="daemon"',
    'user="root"': 'user="sys"',
}
DENIED = "org.freedesktop.DBus.Error.AccessDenied"


def replaced(text, old, new):
    assert text.count(old) == 1, old
    return text.replace(old, new)


class PolicyBus(Bus):
    """The bus of the example, with the user who runs the tests as `role`, who may offer `offers`,
    too, so that there is something to call."""

    def __init__(self, folder, role, offers):
        policy = (EXAMPLE / "policy.conf").read_text()
        for name, absent in NAMED.items():
            here = f'user="{os.getuid()}"' if "user" in name else f'group="{os.getgid()}"'
            policy = replaced(policy, f"<policy {name}>",
                              f"<policy {here if name == role else absent}>")
        rules = "".join(f'<allow own="{name}"/>' for name in offers)
        (folder / "policy.conf").write_text(replaced(
            policy, "</busconfig>", f'<policy context="mandatory">{rules}</policy></busconfig>'))
        (folder / "bus.conf").write_text(replaced(
            (EXAMPLE / "bus.conf").read_text(), "unix:path=/run/morvane/bus", "unix:tmpdir=/tmp"))
        super().__init__(folder / "bus.conf")


@pytest.fixture
def world_of(tmp_path):
    """Makes worlds on a bus with the policy."""
    worlds = []

    def make(role, offers=()):
        worlds.append(World(tmp_path, PolicyBus(tmp_path, role, offers)))
        return worlds[-1]

    yield make
    for world in worlds:
        world.close()


@dataclass(frozen=True)
class Rights:
    offer_presets: bool = False
    offer_parameters: bool = False
    announce: bool = False
    ask_presets: bool = False
    introspect_presets: bool = False
    ask_parameters: bool = False
    end_presets: bool = False


RIGHTS = {
    'user="morvane"': Rights(offer_presets=True, ask_parameters=True),
    'user="parameter-handler"': Rights(offer_parameters=True, announce=True),
    'group="presets"': Rights(ask_presets=True, introspect_presets=True),
    'user="root"': Rights(ask_presets=True, introspect_presets=True, ask_parameters=True,
                          end_presets=True),
    "anybody": Rights(),
}


def may(answer):
    """Whether the bus let a call through, which is then answered without an error."""
    if isinstance(answer, RemoteError):
        assert answer.name == DENIED, answer
        return False
    return True


def may_offer(client, name):
    return may(client.driver("RequestName", "(su)", name, 0))


def may_announce(bus, client):
    listener = RawClient(bus.address)
    listener.listen(HANDLER)
    client.connection.emit_signal(None, "/transaction", HANDLER, "transaction",
                                  GLib.Variant("(as)", [["mode"]]))
    client.driver("GetId")  # once it is answered, the bus has handled the signal
    names = listener.signals()
    listener.close()
    assert names in ([], ["transaction"])
    return names != []


@pytest.mark.parametrize("role", RIGHTS)
def test_everybody_may_do_what_the_policy_says_and_nothing_else(world_of, role):
    alone = world_of(role)
    client = alone.client()
    offers = may_offer(client, PRESET), may_offer(client, HANDLER)
    announces = may_announce(alone.bus, client)
    assert not may_offer(client, "org.example.other")

    served = world_of(role, [PRESET, HANDLER])
    served.simulator()
    served.daemon()
    client = served.client()
    assert Rights(
        *offers, announces,
        may(client.preset("is_preset", "scene")),
        may(client.call(PRESET, "/preset", "org.freedesktop.DBus.Introspectable", "Introspect")),
        may(client.handler("single_get", "(s)", "mode")),
        may(client.preset("die")),
    ) == RIGHTS[role]


@pytest.mark.parametrize("role", RIGHTS)
def test_everybody_may_ask_the_bus_but_not_set_it_up(world_of, role):
    client = world_of(role).client()
    assert may(client.driver("ListNames"))
    assert may(client.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.Introspectable", "Introspect"))
    assert not may(client.driver("UpdateActivationEnvironment", "(a{ss})", {"LD_PRELOAD": "x"}))
    assert not may(client.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus.Monitoring", "BecomeMonitor", "(asu)", [], 0))


def test_errors_of_the_service_come_back(world_of):
    served = world_of('group="presets"', [PRESET])
    served.daemon()
    assert served.client().preset("load_default", "unknown") == RemoteError(
        "org.freedesktop.DBus.GLib.UnmappedError.DbusNorvixPreset.Code0",
        "dbus_norvix_preset: Load defaults failed")


def test_carries_the_values_of_a_big_device(world_of):
    """A reply of more than the 32 MiB that a bus accepts by default."""
    world = world_of('user="root"', offers=(PRESET, HANDLER))
    value = "x" * 400
    world.write("parameters.def", f"""\
row index {{ rangeValid {{ 1..300 }} }}
level rw {{
    index {{ row }} index {{ row }}
    default {{ "{value}" }}
}}
""")
    world.write("presets.def", "scene preset { }\n")
    world.simulator()
    world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    with path.open() as lines:
        assert sum(line.endswith(f"]={value}\n") for line in lines) == 90_000
    assert world.client().preset("load", "scene", str(path)) is True
