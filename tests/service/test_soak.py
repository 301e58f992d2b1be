"""Requests of every kind, one after the other: memory and file descriptors stay what they were.

MORVANE_SOAK_REQUESTS says how many, 6,000 by default; `cmake --build build --target soak` makes
100,000."""

import os
from pathlib import Path

from harness import RawClient, wait_until
from test_clients import mixed_requests

REQUESTS = int(os.environ.get("MORVANE_SOAK_REQUESTS", "6000"))
# How much an allocator may vary; a leak of 32 bytes per request would exceed it in a long run.
SLACK_KIB = 256


def resources(pid):
    """The resident memory in KiB, and the number of open files."""
    status = Path(f"/proc/{pid}/status").read_text()
    resident = int(status.split("VmRSS:")[1].split()[0])
    return resident, len(os.listdir(f"/proc/{pid}/fd"))


def make_requests(world, count):
    """In connections that live for a hundred requests, half of which leave before the answers."""
    requests = mixed_requests(world.file)
    for number in range(count // 100):
        client = RawClient(world.bus)
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


def test_memory_and_descriptors_stay_the_same(served):
    pid = served.morvane.process.pid
    make_requests(served, REQUESTS // 4)
    resident, files = resources(pid)
    make_requests(served, REQUESTS)
    resident_later, files_later = resources(pid)
    print(f"{REQUESTS} requests: {resident} KiB and {files} files before, "
          f"{resident_later} KiB and {files_later} files after")
    assert files_later == files
    assert resident_later <= resident + SLACK_KIB
