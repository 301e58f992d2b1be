"""Stores and loads by two clients for a time, while the Parameter Handler is killed every minute
and the journal is flooded."""

import os
import re
import socket
import threading
import time
from pathlib import Path

from own_bus import KILL, PRESETS, Client, daemon_process, set_up, wait_ready
from report import check, equal, figure, output, until

WARM_UP_KILLS = 2
GROWTH_KB = 256  # of the daemon's own memory after the warm-up, which the C library may vary
FAILED = "org.freedesktop.DBus.GLib.UnmappedError.DbusNorvixPreset.Code0"


class Caller(threading.Thread):
    """A client that stores and loads a file until the end. Counts calls and replies, and those that
    failed, as a request does that loses the Parameter Handler in the middle of its transaction."""

    def __init__(self, name, end):
        super().__init__()
        self.client, self.file, self.end = Client(), str(PRESETS / name), end
        self.calls = self.replies = self.failed = 0
        self.wrong = []

    def run(self):
        try:
            while time.monotonic() < self.end:
                for method in ("store", "load"):
                    self.call(method)
            # Whatever else was sent arrives before the answer to this.
            serial = self.client.send("is_preset", "scene")
            while self.client.receive()[0] != serial:
                self.replies += 1
        except Exception as error:  # seen outside
            self.wrong.append(repr(error))

    def call(self, method):
        serial = self.client.send(method, "scene", self.file)
        self.calls += 1
        replied, value = self.client.receive()
        self.replies += 1
        self.failed += value == FAILED
        if replied != serial or value not in (True, FAILED):
            self.wrong.append((method, value))


def flood_journal(end):
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as log:
        log.connect("/dev/log")
        number = 0
        while time.monotonic() < end:
            for _ in range(50):
                log.send(f"<14>flood: {number:0200}".encode())
                number += 1
            time.sleep(0.05)
    figure("lines that flooded the journal", number)


def descriptors(process):
    return len(os.listdir(f"/proc/{process}/fd"))


def kill_handler(client):
    owner = client.owner("org.norvix.transaction")
    output(f"{KILL}=KILL parameter-handler.service")
    until(lambda: client.owner("org.norvix.transaction") not in (None, owner))


def own_memory(process):
    """Kilobytes that are not those of files."""
    return int(re.search(r"RssAnon:\s+(\d+) kB", Path(f"/proc/{process}/status").read_text())[1])


def warm_up(client):
    """What is allocated once: the paths of a success, and of a Parameter Handler that is lost."""
    caller = Caller("warm", time.monotonic() + 10)
    caller.start()
    for _ in range(WARM_UP_KILLS):
        kill_handler(client)
    caller.join()


def run():
    seconds = int(re.search(r"board\.seconds=(\d+)", Path("/proc/cmdline").read_text())[1])
    set_up()
    client = Client()
    wait_ready(client)
    process = daemon_process()
    warm_up(client)
    memory, files = [own_memory(process)], descriptors(process)
    end = time.monotonic() + seconds
    callers = [Caller("one", end), Caller("two", end)]
    flood = threading.Thread(target=flood_journal, args=(end,))
    for thread in (*callers, flood):
        thread.start()
    while time.monotonic() + 60 < end:
        kill_handler(client)
        time.sleep(60)
        memory.append(own_memory(process))
    for thread in (*callers, flood):
        thread.join()
    for caller in callers:
        name = Path(caller.file).name
        equal(f"{name}: one reply to each call", caller.replies, caller.calls)
        equal(f"{name}: nothing but answers and failures", caller.wrong, [])
        check(f"{name}: at most one call fails for each kill", caller.failed < len(memory),
              caller.failed)
    equal("the daemon is the same process", daemon_process(), process)
    equal("it has as many files open as before", descriptors(process), files)
    check(f"it has grown by at most {GROWTH_KB} kB", own_memory(process) - memory[0] <= GROWTH_KB,
          memory)
    figure("calls", sum(caller.calls for caller in callers))
    figure("calls that failed", sum(caller.failed for caller in callers))
    figure("times that the Parameter Handler was killed", len(memory) - 1)
    figure("kB of the daemon's own memory, before and after each minute", memory)
