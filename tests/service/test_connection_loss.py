"""The bus goes away: nothing can be answered any more, so the daemon ends with status 1."""

import pytest
from harness import ERROR, wait_until

CLOSED = (ERROR,
          "ERROR: Session D-Bus connection closed (no request can be answered any more)\n")


def test_ends_when_the_bus_stops_between_requests(world):
    daemon = world.daemon()
    world.client().preset("is_preset", "scene")
    world.bus.stop()
    assert daemon.wait() == 1
    assert daemon.records_after_start() == [CLOSED]


def test_a_detached_daemon_ends_too(world):
    daemon = world.launch(options=[])
    assert daemon.wait() == 0
    world.bus.stop()
    wait_until(lambda: not daemon.process_ids(), "the daemon to end")
    assert daemon.records()[-1] == CLOSED


@pytest.mark.parametrize("method", ["start", "get_bulk", "end"])
def test_ends_when_the_bus_stops_during_a_call(world, method):
    """The call would be repeated without limit on an open connection."""
    handler = world.simulator(faults=f"{method} 1 no-reply\n")
    daemon = world.daemon()
    path = world.write("p", "old=1\n")
    world.client().start_preset("store", "scene", str(path))
    wait_until(lambda: method in handler.methods(), "the call")
    world.bus.stop()
    assert daemon.wait() == 1
    *_, failure, last = daemon.records_after_start()
    assert failure[1].startswith("ERROR: ")
    assert last == CLOSED
    assert path.read_text().startswith("gain[1]=" if method == "end" else "old=1")
    assert not (world.folder / "p_bak").exists()


@pytest.mark.parametrize("method", ["start", "set_bulk", "set_status", "reset_bulk", "commit"])
def test_ends_when_the_bus_stops_during_a_call_of_a_load(world, method):
    handler = world.simulator(faults=f"{method} 1 no-reply\n")
    daemon = world.daemon()
    content = "gain[1]=1\nmode=off\ntemperature=1\n"
    path = world.write("p", content)
    world.client().start_preset("load_with_default", "scene", str(path))
    wait_until(lambda: method in handler.methods(), "the call")
    world.bus.stop()
    assert daemon.wait() == 1
    assert daemon.records()[-1] == CLOSED
    assert path.read_text() == content


def test_ends_when_the_bus_stops_while_calls_are_repeated(world):
    daemon = world.daemon()
    world.client().start_preset("store", "scene", str(world.folder / "p"))
    wait_until(lambda: len(daemon.records_after_start()) > 10, "the calls to fail")
    world.bus.stop()
    assert daemon.wait() == 1
    assert daemon.records()[-1] == CLOSED
