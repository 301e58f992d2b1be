"""Memory runs out: a request waits for the memory of its lists, and wherever else it happens, the
preset that is loaded next is the complete old one or the complete new one."""

import errno
import signal

import pytest
from harness import ERROR, RemoteError
from test_file_faults import NEW, OLD, store_with_fault, values_after_a_load

# What is logged while a list of names, and one of their values, waits.
OUT_OF_MEMORY = {
    "store": ["parm_get_() getParm - out of memory\n"],
    "load_with_default": ["parm_set_() setParm - out of memory\n"] * 2
    + ["parm_reset_() defParm - out of memory\n"] * 2,
}


@pytest.mark.parametrize("method", OUT_OF_MEMORY)
def test_waits_for_the_memory_of_its_lists(world, method):
    """The N-th allocation fails, for every N that the request has."""
    world.simulator()
    client = world.client()
    path = world.folder / "p"
    seen = []
    while True:
        path.write_text("gain[1]=1\nmode=off\n")
        daemon = world.daemon(
            name=f"failing{len(seen)}",
            fault=(f"g_try_malloc0_n {len(seen) + 1} {errno.ENOMEM}", str(path)))
        assert client.preset(method, "scene", str(path)) is True
        assert client.preset("die") == ()
        assert daemon.wait() == 1
        errors = [text for priority, text in daemon.records_after_start() if priority == ERROR]
        if not errors:
            break
        seen += errors
    assert seen == OUT_OF_MEMORY[method]


def test_memory_that_runs_out_in_a_store_leaves_a_complete_preset(world):
    """The N-th allocation since the first operation on the file fails, for more than a store makes.
    The C library reports it and the store is refused; C++ and GLib end the process."""
    world.simulator()
    client = world.client()
    path = world.folder / "evening"
    outcomes = set()
    for number in range(1, 17):
        fault = f"malloc {number} {errno.ENOMEM}"
        answer, daemon, files = store_with_fault(world, client, path, fault)
        if answer is None:
            assert daemon.wait() in (-signal.SIGABRT, -signal.SIGTRAP)
        else:
            assert client.preset("is_preset", "scene") is True, "the daemon goes on"
            assert daemon.open_files() == files
            assert client.preset("die") == ()
            assert daemon.wait() == 1
        loaded = values_after_a_load(world, client, path)
        assert loaded == NEW if answer is True else loaded in (OLD, NEW)
        outcomes.add(type(answer))
    assert outcomes == {RemoteError, type(None)}
