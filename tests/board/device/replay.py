"""Mounts the states of a recorded disk one after the other and reports what is in them, for a file
system that only the kernel can repair.

The disk "stream" is a sequence of steps: a letter, two numbers, data. W writes to what is on the
disk for good, S begins a state with a copy of it, w writes to that, M mounts it, E ends. The disk
"base" is the file system before the first write. Starts no process for a state, which would take
most of the time.
"""

import ctypes
import fcntl
import hashlib
import os
import re
import struct
import zlib
from base64 import b64encode
from pathlib import Path

from report import output, record, until

STEP = struct.Struct("<cQQ")  # letter, offset or number of the state, length of the data
DURABLE, STATE, MOUNTED = Path("/run/durable"), Path("/run/state"), Path("/mnt")
DISKS = Path("/dev/disk/by-id")
MS_NOATIME, BLKFLSBUF = 0x400, 0x1261
libc = ctypes.CDLL(None, use_errno=True)


class Mounts:
    """Mounts what is in STATE as a kind of file system, and reports the data of each file once."""

    def __init__(self, kind):
        self.kind, self.reported = kind, set()
        self.device = output(f"modprobe --all loop {kind} && losetup --find --show {STATE}")
        self.open_device = os.open(self.device, os.O_RDONLY)

    def digest(self, data):
        digest = hashlib.sha256(data).hexdigest()[:16]
        if digest not in self.reported:
            self.reported.add(digest)
            record(content=digest, data=b64encode(zlib.compress(data)).decode())
        return digest

    def contents(self):
        """The digests of the state's files by their names; a message if it cannot be mounted."""
        fcntl.ioctl(self.open_device, BLKFLSBUF)  # which may remember the state before
        if libc.mount(self.device.encode(), bytes(MOUNTED), self.kind.encode(), MS_NOATIME, None):
            return os.strerror(ctypes.get_errno())
        files = {path.name: self.digest(path.read_bytes())
                 for path in MOUNTED.iterdir() if path.is_file()}
        if libc.umount2(bytes(MOUNTED), 0):
            raise OSError(ctypes.get_errno(), f"umount {MOUNTED}")
        return files


def data_of(stream):
    """The parts of a sparse file that are not holes, with their offsets."""
    end, size = 0, os.fstat(stream.fileno()).st_size
    while end < size:
        try:
            begin = os.lseek(stream.fileno(), end, os.SEEK_DATA)
        except OSError:  # only a hole is left
            return
        end = os.lseek(stream.fileno(), begin, os.SEEK_HOLE)
        yield begin, os.pread(stream.fileno(), end - begin, begin)


def write(stream, offset, data):
    stream.seek(offset)
    stream.write(data)


def begin_state(durable, state):
    size = os.fstat(state.fileno()).st_size
    state.truncate(0)
    state.truncate(size)
    for offset, data in data_of(durable):
        write(state, offset, data)


def run():
    kind = re.search(r"board\.kind=(\w+)", Path("/proc/cmdline").read_text())[1]
    until(lambda: (DISKS / "virtio-stream").exists() and (DISKS / "virtio-base").exists())
    output(f"mount -o remount,size=400M /run; cp --sparse=always {DISKS}/virtio-base {DURABLE}; "
           f"truncate --reference={DURABLE} {STATE}")
    mounts = Mounts(kind)
    with (DISKS / "virtio-stream").open("rb") as steps, \
            DURABLE.open("r+b", buffering=0) as durable, STATE.open("r+b", buffering=0) as state:
        while (step := STEP.unpack(steps.read(STEP.size)))[0] != b"E":
            letter, number, length = step
            data = steps.read(length)
            if letter == b"W":
                write(durable, number, data)
            elif letter == b"S":
                begin_state(durable, state)
            elif letter == b"w":
                write(state, number, data)
            else:
                record(state=number, files=mounts.contents())
