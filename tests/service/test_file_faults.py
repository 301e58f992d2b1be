"""Whatever a file operation of a store does, or wherever a power cut hits it: the preset that is
loaded next is the complete old one or the complete new one."""

import errno

import pytest
from harness import RemoteError
from gi.repository import GLib

KEYS = ["gain[1]", "gain[2]", "gain[3]", "mode", "temperature"]
OLD = {"gain[1]": "1", "gain[2]": "1", "gain[3]": "1", "mode": "1", "temperature": "1"}
NEW = {"gain[1]": "2", "gain[2]": "2", "gain[3]": "2", "mode": "2", "temperature": "2"}
OTHER = {"gain[1]": "3", "gain[2]": "3", "gain[3]": "3", "mode": "3", "temperature": "3"}


def text_of(values):
    return "".join(f"{key}={values[key]}\n" for key in KEYS)


def set_values(client, values):
    for key, value in values.items():
        method = "single_set_status" if key == "temperature" else "single_set"
        assert client.handler(method, "(ss)", key, value) == ()


def values_after_a_load(world, client, path):
    """What a daemon without faults loads from the file."""
    set_values(client, OTHER)
    daemon = world.daemon(name="loader")
    assert client.preset("load", "scene", str(path)) is True
    assert client.preset("die") == ()
    daemon.wait()
    values = client.handler("single_get_bulk", "(uas)", 0, KEYS)
    return dict(zip(KEYS, values))


def store_with_fault(world, client, path, fault):
    """Stores the new values over a file of the old ones. Returns the answer, None if the daemon
    ended before it, the daemon, and how many files it had open."""
    path.write_text(text_of(OLD))
    set_values(client, NEW)
    daemon = world.daemon(name="storer", fault=(fault, str(path)))
    files = daemon.open_files()
    try:
        answer = client.preset("store", "scene", str(path))
    except GLib.Error:
        answer = None
    if isinstance(answer, RemoteError) and "NoReply" in answer.name:
        answer = None
    return answer, daemon, files


def test_a_power_cut_leaves_the_old_or_the_new_preset(world):
    """The daemon is killed before each operation on the file, its backup and their folder."""
    world.simulator()
    client = world.client()
    path = world.folder / "evening"
    outcomes = []
    while True:
        answer, daemon, _ = store_with_fault(world, client, path, f"any {len(outcomes) + 1} kill")
        if answer is True:
            client.preset("die")
            daemon.wait()
            break
        assert answer is None
        assert daemon.wait() == -9
        outcomes.append(values_after_a_load(world, client, path))
        assert not (world.folder / "evening_bak").exists()
    assert len(outcomes) > 12, "every operation of the store was one"
    changed = outcomes.index(NEW)
    assert outcomes[:changed] == [OLD] * changed
    assert outcomes[changed:] == [NEW] * (len(outcomes) - changed)
    assert 0 < changed < len(outcomes)
    assert values_after_a_load(world, client, path) == NEW


@pytest.mark.parametrize("function, error", [
    ("open", errno.EMFILE), ("open", errno.EACCES), ("open", errno.ENOSPC),
    ("fchown", errno.EPERM), ("fchmod", errno.EIO), ("stat", errno.EIO), ("rename", errno.EIO),
    ("rename", errno.EACCES), ("remove", errno.EIO), ("remove", errno.EACCES),
    ("fwrite", errno.ENOSPC), ("fwrite", errno.EIO), ("fflush", errno.ENOSPC),
    ("fflush", errno.EIO),
    ("fsync", errno.EIO), ("fsync", errno.ENOSPC), ("fsync", errno.EINVAL),
    ("fclose", errno.ENOSPC), ("fclose", errno.EIO),
])
def test_every_failure_of_an_operation_leaves_a_complete_preset(world, function, error):
    """The N-th call fails, for every N that a store has."""
    world.simulator()
    client = world.client()
    path = world.folder / "evening"
    calls = 8  # more than a store makes of any one function
    for number in range(1, calls + 1):
        fault = f"{function} {number} {error}"
        answer, daemon, files = store_with_fault(world, client, path, fault)
        assert client.preset("is_preset", "scene") is True, "the daemon goes on"
        assert daemon.open_files() == files
        assert client.preset("die") == ()
        assert daemon.wait() == 1
        loaded = values_after_a_load(world, client, path)
        if answer is True:
            assert loaded == NEW
        else:
            assert isinstance(answer, RemoteError)
            assert loaded in (OLD, NEW)
        assert not (world.folder / "evening_bak").exists()
    assert answer is True, "the last one is beyond all calls"


@pytest.mark.parametrize("function, error", [
    ("open", errno.EMFILE), ("open", errno.EACCES), ("open", errno.EIO), ("stat", errno.EIO),
    ("stat", errno.EACCES), ("remove", errno.EIO), ("rename", errno.EIO), ("rename", errno.EACCES),
    ("fclose", errno.EIO),
])
def test_every_failure_of_a_load_keeps_the_preset(world, function, error):
    """With the backup of an interrupted store: the N-th call fails, for every N that a load has."""
    world.simulator()
    client = world.client()
    path, backup = world.folder / "evening", world.folder / "evening_bak"
    calls = 4  # more than a load makes of any one function
    for number in range(1, calls + 1):
        path.write_text("half-writ")
        backup.write_text(text_of(OLD))
        set_values(client, OTHER)
        daemon = world.daemon(name="loader", fault=(f"{function} {number} {error}", str(path)))
        files = daemon.open_files()
        answer = client.preset("load", "scene", str(path))
        assert client.preset("is_preset", "scene") is True, "the daemon goes on"
        assert daemon.open_files() == files
        assert client.preset("die") == ()
        assert daemon.wait() == 1
        values = client.handler("single_get_bulk", "(uas)", 0, KEYS)
        assert dict(zip(KEYS, values)) == (OLD if answer is True else OTHER)
        assert values_after_a_load(world, client, path) == OLD
    assert answer is True, "the last one is beyond all calls"
