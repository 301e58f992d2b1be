"""Stores versions of presets to the disks that the kernel's command line names, and writes beside
them which versions were answered.

After each answer the numbers of all files go to the raw second partition of the same disk, past the
page cache and without a flush, so that the record of the writes says which answers came before each
of them.
"""

import json
import mmap
import os
import random
import re
import shutil
import time
from pathlib import Path

from own_bus import Client, daemon_process, set_up, wait_ready
from report import check, equal, figure, output, sh, until
from versions import FILES, KEYS, keys_of, text_of

CYCLES, ROUNDS = 2, 24  # of stores on a disk, and in each of them
FILLED, INTERRUPTED, CARELESS = (8, 16), (5, 11, 14, 20), (7, 18)


class Disk:
    """A mounted disk and the versions that were answered on it."""

    def __init__(self, name):
        self.name = name
        self.folder = Path("/board") / name
        device = f"/dev/disk/by-id/virtio-{name}-part"
        until(lambda: Path(device + "2").exists())
        self.folder.mkdir(parents=True)
        owner = ",uid=morvane" if "vfat" in name else ""
        output(f"mount -o noatime{owner} {device}1 {self.folder}")
        if not owner:
            output(f"chown morvane {self.folder}")
        self.raw = os.open(device + "2", os.O_WRONLY | os.O_DIRECT)
        self.page = mmap.mmap(-1, 4096)
        self.answered = {}

    def answer(self, file, version):
        self.answered[file] = version
        data = json.dumps(self.answered).encode()
        self.page[:] = data.ljust(4096)
        os.pwrite(self.raw, self.page, 0)

    def path(self, file):
        return str(self.folder / file)


class Stores:
    """The stores of one run. Versions count up, on all disks."""

    def __init__(self):
        self.version = 0
        self.client = Client()
        self.random = random.Random(1)

    def set_values(self, file):
        """Gives the live parameters the next version, and returns the arguments of its store."""
        self.version += 1
        preset = FILES[file]
        keys = KEYS[preset]
        self.client.handler("single_set_bulk", keys, [text_of(self.version)] * len(keys))
        if file == "sub":
            return "store_subpreset", keys_of(file), preset
        return "store", preset

    def store(self, disk, file):
        """Whether the store succeeded, which is noted on the disk."""
        method, *arguments = self.set_values(file)
        answer = self.client.call(method, *arguments, disk.path(file))
        if answer is True:
            disk.answer(file, self.version)
        return answer is True

    def interrupt(self, disk, file):
        """Kills the daemon somewhere in a store, and waits until it is there again."""
        owner = self.client.owner("org.norvix.preset")
        process = daemon_process()
        method, *arguments = self.set_values(file)
        self.client.send(method, *arguments, disk.path(file))
        time.sleep(self.random.uniform(0, 0.1))
        os.kill(process, 9)
        if self.client.receive()[1] is True:  # it was answered before
            disk.answer(file, self.version)
        until(lambda: self.client.owner("org.norvix.preset") not in (None, owner))

    def fill(self, disk):
        """Whether a store is refused on a full disk."""
        fillers = disk.folder / "fillers"
        fillers.mkdir()
        size = os.statvfs(disk.folder).f_blocks * os.statvfs(disk.folder).f_frsize
        while size >= 4096:
            # Without writing, which would only make the record longer.
            status, _ = sh(f"fallocate --keep-size --length={size} $(mktemp -p {fillers})")
            size = size // 2 if status else size
        refused = not self.store(disk, "big")
        shutil.rmtree(fillers)
        return refused

    def go_through(self, disk):
        for file in FILES:
            self.store(disk, file)
        refused = []
        for turn in CYCLES * list(range(ROUNDS)):
            if turn in FILLED:
                refused.append(self.fill(disk))
            if turn in INTERRUPTED:
                file = self.random.choice(["first", "middle", "sub"])
                self.interrupt(disk, file)
                equal(f"{disk.name}: {file} loads after the interrupted store",
                      self.client.call("load", FILES[file], disk.path(file)), True)
            elif turn in CARELESS:
                self.interrupt(disk, "careless")
                file = "careless"
            else:
                file = self.random.choice(["first", "second", "middle", "first", "sub"])
            if not self.store(disk, file):
                check(f"{disk.name}: a store of {file} succeeds", False)
        self.store(disk, "big")
        equal(f"{disk.name}: stores on a full disk are refused", refused,
              [True] * CYCLES * len(FILLED))


def run():
    arguments = Path("/proc/cmdline").read_text()
    disks = re.search(r"board\.disks=(\S+)", arguments)[1].split(",")
    faults = re.search(r"board\.fault=(\S+)", arguments)
    folder = Path("/etc/systemd/system/morvane.service.d")
    folder.mkdir()
    preload = f"Environment=LD_PRELOAD=/srv/board/faults.so MORVANE_BOARD_FAULT={faults[1]}\n" \
        if faults else ""
    (folder / "board.conf").write_text(
        f"[Unit]\nStartLimitIntervalSec=0\n[Service]\nReadWritePaths=-/board\n{preload}")
    Path("/board").mkdir()
    set_up("/srv/board/definitions", "")
    mounted = [Disk(name) for name in disks]
    output("systemctl restart morvane.service")
    stores = Stores()
    wait_ready(stores.client)
    for disk in mounted:
        begin, first = time.monotonic(), stores.version
        stores.go_through(disk)
        figure(f"{disk.name}: stores", stores.version - first)
        figure(f"{disk.name}: seconds", round(time.monotonic() - begin))
        output(f"umount {disk.folder}")
