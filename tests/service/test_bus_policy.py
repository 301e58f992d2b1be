"""The policy of the example with its own bus: who may offer, call and announce what.

Switching users needs root. So on the bus of each test the user who runs the tests is one of those
that the policy names, and unrelated users of the machine stand in for the others.
"""

import os
import re
import subprocess
from dataclasses import dataclass, replace

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
# What a system bus allows everybody: as the example's own, but for signals.
SYSTEM_BUS = """\
<policy context="default">
  <allow user="*"/>
  <deny own="*"/>
  <deny send_type="method_call"/>
  <allow send_type="signal"/>
  <allow send_requested_reply="true" send_type="method_return"/>
  <allow send_requested_reply="true" send_type="error"/>
  <allow receive_sender="*"/>
  <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
</policy>
"""


def replaced(text, old, new):
    assert text.count(old) == 1, old
    return text.replace(old, new)


def own_policy():
    return (EXAMPLE / "policy.conf").read_text()


def system_policy():
    """The policy as docs/integration.md changes it for a system bus, on one."""
    guide = (SOURCE / "docs/integration.md").read_text()
    change = re.search(r"sed '([^']*)' \\\n *\$own_bus/policy.conf", guide)[1]
    policy = subprocess.run(["sed", change], input=own_policy(), check=True, text=True,
                            stdout=subprocess.PIPE).stdout
    assert 'context="default"' not in policy
    return replaced(policy, "<busconfig>\n", f"<busconfig>\n{SYSTEM_BUS}")


class PolicyBus(Bus):
    """The bus of the example, or another with `policy`, with the user who runs the tests as `role`,
    who may offer `offers`, too, so that there is something to call."""

    def __init__(self, folder, role, offers, policy):
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

    def make(role, offers=(), policy=own_policy):
        worlds.append(World(tmp_path, PolicyBus(tmp_path, role, offers, policy())))
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


@pytest.mark.parametrize("policy", [own_policy, system_policy])
@pytest.mark.parametrize("role", RIGHTS)
def test_everybody_may_do_what_the_policy_says_and_nothing_else(world_of, role, policy):
    alone = world_of(role, policy=policy)
    client = alone.client()
    offers = may_offer(client, PRESET), may_offer(client, HANDLER)
    announces = may_announce(alone.bus, client)
    assert not may_offer(client, "org.example.other")

    served = world_of(role, [PRESET, HANDLER], policy)
    served.simulator()
    served.daemon()
    client = served.client()
    assert Rights(
        *offers, announces,
        may(client.preset("is_preset", "scene")),
        may(client.call(PRESET, "/preset", "org.freedesktop.DBus.Introspectable", "Introspect")),
        may(client.handler("single_get", "(s)", "mode")),
        may(client.preset("die")),
    ) == (RIGHTS[role] if policy is own_policy else replace(RIGHTS[role], announce=True))


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
