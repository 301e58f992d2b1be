"""Requests of every kind, those that fail among them: memory and file descriptors stay what they
were.

MORVANE_SOAK_REQUESTS says how many, 6,000 by default; `cmake --build build --target soak` makes
100,000."""

import itertools
import os
from pathlib import Path

from harness import RemoteError, wait_until
from raw_client import RawClient
from test_clients import mixed_requests
from test_methods import ERROR_NAME

REQUESTS = int(os.environ.get("MORVANE_SOAK_REQUESTS", "6000"))
# How much an allocator may vary; a leak of 32 bytes per request would exceed it in a long run.
SLACK_KIB = 256


def resources(daemon):
    """The resident memory in KiB, and the number of open files."""
    status = Path(f"/proc/{daemon.process.pid}/status").read_text()
    return int(status.split("VmRSS:")[1].split()[0]), daemon.open_files()


def make_requests(world, count):
    """In connections that live for a hundred requests, half of which leave before the answers."""
    requests = mixed_requests(world.file)
    for number in range(count // 100):
        client = RawClient(world.bus.address)
        sent = []
        for _ in range(100):
            call, answer = next(requests)
            sent.append((client.send(*call), answer))
        if number % 2 == 0:
            assert [client.receive() for _ in sent] == sent
        client.close()
    assert world.user.preset("is_preset", "scene") is True
    calls = world.handler.methods
    wait_until(lambda: calls().count("start") == calls().count("end"), "the last transaction")


def failing_requests(world):
    """Requests that fail, each for another reason."""
    folder, fifo, link = world.folder / "folder", world.folder / "fifo", world.folder / "link"
    folder.mkdir()
    os.mkfifo(fifo)
    link.symlink_to(link)
    files = {
        "not_utf8": b"gain[1]=5\nmode=\xff\n",
        "refused": b"mode=nonsense\n",
        "no_backup": b"mode=off\n",
        "half_bak": b"mode=off\n",
    }
    paths = {name: str(world.write(name, text)) for name, text in files.items()}
    (world.folder / "no_backup_bak").mkdir()
    (world.folder / "half").mkdir()
    world.write("half/file", "which keeps the folder from being removed\n")
    loads = [folder, fifo, link, world.folder / "missing", paths["not_utf8"], paths["refused"],
             world.folder / "half"]
    stores = [folder, fifo, world.folder / "missing/p", paths["no_backup"],
              world.folder / ("n" * 255)]
    return [
        *(("load", "scene", str(path)) for path in loads),
        *(("load_with_default", "scene", str(path)) for path in loads),
        ("load", "unknown", paths["refused"]),
        ("load_default", "unknown"),
        *(("store", "scene", str(path)) for path in stores),
        *(("store_subpreset", ["mode"], "scene", str(path)) for path in stores),
        ("store", "unknown", paths["refused"]),
        ("store_subpreset", ["unknown"], "scene", paths["refused"]),
    ]


def fail_requests(world, requests, count):
    for request in itertools.islice(itertools.cycle(requests), count):
        answer = world.user.preset(*request)
        assert isinstance(answer, RemoteError) and answer.name == ERROR_NAME, request


def test_memory_and_descriptors_stay_the_same(served):
    make_requests(served, REQUESTS // 4)
    resident, files = resources(served.morvane)
    make_requests(served, REQUESTS)
    resident_later, files_later = resources(served.morvane)
    print(f"{REQUESTS} requests: {resident} KiB and {files} files before, "
          f"{resident_later} KiB and {files_later} files after")
    assert files_later == files
    assert resident_later <= resident + SLACK_KIB


def test_failing_requests_leave_nothing_behind(served):
    requests = failing_requests(served)
    files = served.morvane.open_files()
    for request in requests:
        fail_requests(served, [request], 1)
        assert served.morvane.open_files() == files, request
    fail_requests(served, requests, REQUESTS // 40)
    resident, _ = resources(served.morvane)
    fail_requests(served, requests, REQUESTS // 10)
    resident_later, files_later = resources(served.morvane)
    assert files_later == files
    assert resident_later <= resident + SLACK_KIB
