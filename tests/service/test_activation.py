"""The activation file: a bus starts the daemon on the first call."""

from gi.repository import Gio
from harness import Simulator, wait_until

SERVICE = ("org.norvix.preset", "/preset", "org.norvix.preset")


def test_the_first_call_starts_the_daemon(activated):
    assert not activated.client.owns("org.norvix.preset")
    assert activated.client.call(*SERVICE, "is_preset", "(s)", "scene",
                                 flags=Gio.DBusCallFlags.NONE) is True
    # The process that detached may answer before the one that the bus started has ended.
    wait_until(lambda: len(activated.process_ids()) == 1, "one process to be left")


def test_the_daemon_uses_the_bus_that_started_it(activated, tmp_path):
    simulator = Simulator(activated.bus, tmp_path, activated.parameters)
    try:
        assert activated.client.call(*SERVICE, "store", "(ss)", "scene", str(tmp_path / "p"),
                                     flags=Gio.DBusCallFlags.NONE) is True
    finally:
        simulator.stop()
    assert (tmp_path / "p").read_text() == "mode=1\n"


def test_a_call_after_die_starts_the_daemon_again(activated):
    for _ in range(2):
        assert activated.client.call(*SERVICE, "die", flags=Gio.DBusCallFlags.NONE) == ()
        wait_until(lambda: not activated.process_ids(), "the daemon to end")
        wait_until(lambda: not activated.client.owns("org.norvix.preset"), "the name to be free")
